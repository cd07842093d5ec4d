// SPDX-License-Identifier: GPL-3.0-or-later
#include "Bundle.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

Bundle Bundle::main()
{
    return Bundle(QCoreApplication::applicationDirPath() + u"/../share/OrvaneBreak"_s);
}

Bundle::Bundle(const QString &folder)
    : m_folder(folder)
{
    QFile file(folder + u"/Info.json"_s);
    if (file.open(QIODevice::ReadOnly))
        m_information = QJsonDocument::fromJson(file.readAll()).object();
}

std::optional<QString> Bundle::infoText(const QString &key) const
{
    const QJsonValue value = m_information.value(key);
    if (!value.isString())
        return std::nullopt;
    return value.toString();
}

QString Bundle::shortVersion() const
{
    return infoText(u"CFBundleShortVersionString"_s).value_or(u"?"_s);
}

QString Bundle::soundsFolder() const
{
    return m_folder + u"/sounds"_s;
}
