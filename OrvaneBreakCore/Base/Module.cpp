// SPDX-License-Identifier: GPL-3.0-or-later
#include "Module.h"

#include "MessageFilter.h"

#include <QCoreApplication>
#include <QJsonObject>
#include <QPluginLoader>

using namespace Qt::StringLiterals;

QString Module::folder()
{
    return QCoreApplication::applicationDirPath() + u"/../lib/orvanebreak/modules"_s;
}

QObject *Module::load(const QString &path)
{
    QPluginLoader loader(path);
    // A function that is missing shows now instead of in the middle of an update, and a thread that plays a
    // sound keeps its code until the process ends.
    loader.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    // What the file says of itself is read without running anything in it.
    const QJsonValue description = loader.metaData().value("MetaData"_L1);
    const bool isOurs = description["version"_L1] == QJsonValue(QStringLiteral(ORVANE_VERSION));
    QObject *module = isOurs ? loader.instance() : nullptr;
    if (!module) {
        const bool isAnother = !isOurs && description.isObject();
        qCWarning(orvaneLog).noquote() << u"OrvaneBreak:"_s << path << u"cannot be used:"_s
                                       << (isAnother ? u"it is of another version"_s : loader.errorString());
    }
    return module;
}
