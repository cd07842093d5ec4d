// SPDX-License-Identifier: GPL-3.0-or-later
#include "MessageArchive.h"

#include "Preferences.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QString shownKey = u"OBShownMessages"_s;
const QString acknowledgedKey = u"OBAckMessage"_s;
const QString historyKey = u"OBMessageHistory"_s;

constexpr qsizetype maxKept = 50;

bool isInteger(const QJsonValue &value)
{
    return value.toVariant().typeId() == QMetaType::LongLong;
}

void keepLast(QJsonArray &array)
{
    while (array.size() > maxKept)
        array.removeFirst();
}

/// The array under `key` if every element passes the test, otherwise an empty one.
template <typename Test>
QJsonArray wholeArray(const Preferences &preferences, const QString &key, Test test)
{
    const QJsonArray stored = preferences.array(key).value_or(QJsonArray());
    return std::all_of(stored.begin(), stored.end(), test) ? stored : QJsonArray();
}

QJsonArray shownMessages(const Preferences &preferences)
{
    return wholeArray(preferences, shownKey, isInteger);
}

QJsonArray storedHistory(const Preferences &preferences)
{
    return wholeArray(preferences, historyKey, [](const QJsonValue &entry) { return entry.isObject(); });
}

QDateTime dateOf(const QJsonValue &value, const QDateTime &otherwise)
{
    const QDateTime date = QDateTime::fromString(value.toString(), Qt::ISODateWithMs);
    return date.isValid() ? date.toUTC() : otherwise;
}

} // namespace

MessageArchive::MessageArchive(Preferences &preferences)
    : m_preferences(preferences)
{
}

bool MessageArchive::wasShown(qint64 id) const
{
    return shownMessages(m_preferences).contains(QJsonValue(id));
}

std::optional<qint64> MessageArchive::acknowledged() const
{
    const std::optional<qint64> id = m_preferences.integer(acknowledgedKey);
    return id && *id >= 1 ? id : std::nullopt;
}

void MessageArchive::markShown(const ServerMessage &message, const QDateTime &now)
{
    // Acknowledging this message again would withdraw the acknowledgement of a later one, which the server
    // would then send forever although it is ignored here.
    if (wasShown(message.id))
        return;
    // Each value is on disk before the next one is written. If the process dies in between, the message may
    // be shown again, but it is not missing from the conversation.
    const QJsonArray known = storedHistory(m_preferences);
    const bool isKnown = std::any_of(known.begin(), known.end(), [&](const QJsonValue &entry) {
        const QJsonValue id = entry[u"id"_s];
        return isInteger(id) && id.toInteger() == message.id;
    });
    if (!isKnown)
        append(message.id, message.text, now, false);
    m_preferences.setValue(acknowledgedKey, message.id);
    QJsonArray shown = shownMessages(m_preferences);
    shown.append(message.id);
    keepLast(shown);
    m_preferences.setValue(shownKey, shown);
}

void MessageArchive::addReply(const QString &text, const QDateTime &now)
{
    append(-(now.toMSecsSinceEpoch() / 1000), text, now, true);
}

QList<ArchivedMessage> MessageArchive::history(const QDateTime &now) const
{
    QList<ArchivedMessage> result;
    for (const QJsonValue entry : storedHistory(m_preferences)) {
        const QJsonValue id = entry[u"id"_s];
        const QJsonValue body = entry[u"body"_s];
        if (isInteger(id) && body.isString())
            result.prepend({id.toInteger(), body.toString(), dateOf(entry[u"date"_s], now),
                            entry[u"mine"_s].toBool(false)});
    }
    return result;
}

void MessageArchive::append(qint64 id, const QString &body, const QDateTime &now, bool mine)
{
    QJsonArray history = storedHistory(m_preferences);
    history.append(QJsonObject{{u"id"_s, id},
                               {u"body"_s, body},
                               {u"date"_s, now.toUTC().toString(Qt::ISODateWithMs)},
                               {u"mine"_s, mine}});
    keepLast(history);
    m_preferences.setValue(historyKey, history);
}
