// SPDX-License-Identifier: GPL-3.0-or-later
#include "Resources.h"

#include <QApplication>
#include <QDir>
#include <QMap>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace {

int entries(const QString &folder)
{
    const QDir::Filters everything = QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot;
    return static_cast<int>(QDir(folder).entryList(everything).size());
}

/// Qt frees the gestures of destroyed views only when it creates the next one, and keeps an input device from
/// its first event on.
bool isKeptByTheToolkit(const QObject &object)
{
    return object.inherits("QGesture") || object.inherits("QInputDevice");
}

} // namespace

Resources::Counts Resources::ofTheProcess()
{
    // Listing the descriptors opens another one, each time.
    Counts counts{{u"descriptors"_s, entries(u"/proc/self/fd"_s)},
                  {u"threads"_s, entries(u"/proc/self/task"_s)},
                  {u"widgets"_s, static_cast<int>(QApplication::allWidgets().size())}};
    for (const QObject *object : qApp->findChildren<QObject *>()) {
        if (!isKeptByTheToolkit(*object))
            ++counts[QString::fromLatin1(object->metaObject()->className())];
    }
    for (const QWidget *window : QApplication::topLevelWidgets()) {
        const QString name = u"window \"%1\""_s.arg(window->objectName());
        ++counts[name];
        counts[name + u" parts"_s] += static_cast<int>(window->findChildren<QObject *>().size());
    }
    return counts;
}

QString Resources::difference(const Counts &before, const Counts &after)
{
    QStringList lines;
    const QStringList names = before.keys() + after.keys();
    for (const QString &name : names) {
        const QString line = u"%1: %2, before %3"_s.arg(name).arg(after.value(name)).arg(before.value(name));
        if (before.value(name) != after.value(name) && !lines.contains(line))
            lines << line;
    }
    return lines.join(u"; "_s);
}
