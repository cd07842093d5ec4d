// SPDX-License-Identifier: GPL-3.0-or-later
#include "Conversation.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maxEntries = 50;

QStringList lines(const QList<ArchivedMessage> &history)
{
    QStringList result;
    for (const ArchivedMessage &entry : history)
        result << u"%1 %2 %3 %4"_s.arg(entry.id)
                      .arg(entry.mine)
                      .arg(entry.date.toMSecsSinceEpoch())
                      .arg(entry.body);
    return result;
}

} // namespace

void Conversation::receive(const ServerMessage &message)
{
    if (!seen.contains(message.id))
        pending = message;
}

void Conversation::see(const ServerMessage &message, const QDateTime &now)
{
    if (pending == message)
        pending.reset();
    // A message can be seen in the conversation first and then in the dialog.
    if (seen.contains(message.id))
        return;
    seen.append(message.id);
    if (seen.size() > maxEntries)
        seen.removeFirst();
    append({message.id, message.text, now, false});
}

void Conversation::reply(const QString &text, const QDateTime &now)
{
    append({-now.toSecsSinceEpoch(), text, now, true});
}

QString Conversation::difference(const QJsonObject &preferences, const QList<ArchivedMessage> &history) const
{
    QJsonArray ids;
    for (const qint64 id : seen)
        ids.append(id);
    if (preferences.value(u"OBShownMessages"_s).toArray() != ids)
        return u"the messages that were shown"_s;
    const qint64 acknowledged = preferences.value(u"OBAckMessage"_s).toInteger();
    if (acknowledged != (seen.isEmpty() ? 0 : seen.constLast()))
        return u"the acknowledgement %1"_s.arg(acknowledged);
    if (lines(history) != lines({entries.rbegin(), entries.rend()}))
        return u"the conversation: %1; expected: %2"_s.arg(
            lines(history).join(u", "_s), lines({entries.rbegin(), entries.rend()}).join(u", "_s));
    return {};
}

void Conversation::append(const ArchivedMessage &entry)
{
    entries.append(entry);
    if (entries.size() > maxEntries)
        entries.removeFirst();
}
