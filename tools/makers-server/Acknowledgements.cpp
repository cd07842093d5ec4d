// SPDX-License-Identifier: GPL-3.0-or-later
#include "Acknowledgements.h"

#include "JsonFile.h"

#include <QJsonArray>
#include <QJsonObject>

#include <utility>

Acknowledgements::Acknowledgements(QString file)
    : m_file(std::move(file))
{
}

bool Acknowledgements::add(const QString &device, qint64 id)
{
    if (contains(device, id))
        return false;
    QJsonObject devices = readJsonFile(m_file).object();
    QJsonArray ids = devices[device].toArray();
    ids.append(id);
    devices[device] = ids;
    writeJsonFile(m_file, QJsonDocument(devices));
    return true;
}

bool Acknowledgements::contains(const QString &device, qint64 id) const
{
    return readJsonFile(m_file).object()[device].toArray().contains(QJsonValue(id));
}
