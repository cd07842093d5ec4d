// SPDX-License-Identifier: GPL-3.0-or-later
#include "Outbox.h"

#include "JsonFile.h"

#include <QJsonArray>
#include <QJsonObject>

#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

Outbox::Outbox(QString file)
    : m_file(std::move(file))
{
}

void Outbox::publish(const Message &message)
{
    if (message.id < 1)
        throw std::runtime_error("the id of a message is an integer from 1 on");
    if (message.text.isEmpty())
        throw std::runtime_error("the text of a message is not empty");
    QList<Message> all = messages();
    all.removeIf([&](const Message &other) { return other.id == message.id; });
    all.append(message);
    setMessages(all);
}

bool Outbox::withdraw(qint64 id)
{
    QList<Message> all = messages();
    if (all.removeIf([&](const Message &message) { return message.id == id; }) == 0)
        return false;
    setMessages(all);
    return true;
}

std::optional<Message> Outbox::newest() const
{
    const QList<Message> all = messages();
    return all.isEmpty() ? std::nullopt : std::optional(all.last());
}

QList<Message> Outbox::messages() const
{
    QList<Message> result;
    const QJsonArray entries = readJsonFile(m_file).array();
    for (const QJsonValue entry : entries)
        result.append({entry["id"_L1].toInteger(), entry["text"_L1].toString()});
    return result;
}

void Outbox::setMessages(const QList<Message> &messages) const
{
    QJsonArray entries;
    for (const Message &message : messages)
        entries.append(QJsonObject{{u"id"_s, message.id}, {u"text"_s, message.text}});
    writeJsonFile(m_file, QJsonDocument(entries));
}
