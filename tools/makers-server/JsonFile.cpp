// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonFile.h"

#include <QFile>
#include <QJsonParseError>
#include <QSaveFile>

#include <stdexcept>

using namespace Qt::StringLiterals;

QJsonDocument readJsonFile(const QString &path)
{
    QFile file(path);
    if (!file.exists())
        return {};
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error((path + u": "_s + file.errorString()).toStdString());
    QJsonParseError error;
    QJsonDocument content = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError)
        throw std::runtime_error((path + u": "_s + error.errorString()).toStdString());
    return content;
}

void writeJsonFile(const QString &path, const QJsonDocument &content)
{
    QSaveFile file(path);
    const bool isWritten =
        file.open(QIODevice::WriteOnly) && file.write(content.toJson()) >= 0 && file.commit();
    if (!isWritten)
        throw std::runtime_error((path + u": "_s + file.errorString()).toStdString());
}
