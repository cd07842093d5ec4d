// SPDX-License-Identifier: GPL-3.0-or-later
#include "MessageArchive.h"
#include "Support/MemoryPreferences.h"
#include "Target.h"

#include <QJsonDocument>
#include <QTimeZone>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maxEntries = 50;
const ServerMessage message{7, u"Bonjour"_s};

QJsonObject withoutArchive(QJsonObject values)
{
    for (const QString &key : {u"OBShownMessages"_s, u"OBAckMessage"_s, u"OBMessageHistory"_s})
        values.remove(key);
    return values;
}

} // namespace

/// Any stored conversation can be read and continued.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QDateTime now(QDate(2026, 3, 3), QTime(13, 5), QTimeZone::utc());
    const QJsonObject stored = QJsonDocument::fromJson(fuzzInput(data, size)).object();
    MemoryPreferences preferences(stored);
    MessageArchive archive(preferences);

    const QList<ArchivedMessage> before = archive.history(now);
    acceptedInputs += before.isEmpty() ? 0 : 1;
    for (const ArchivedMessage &entry : before)
        require(entry.date.isValid() && entry.date.offsetFromUtc() == 0, "every entry has a date");
    require(archive.acknowledged().value_or(1) >= 1, "what is acknowledged has an id");

    archive.addReply(u"réponse"_s, now);
    const QList<ArchivedMessage> after = archive.history(now);
    const ArchivedMessage reply{-now.toSecsSinceEpoch(), u"réponse"_s, now, true};
    require(after.constFirst() == reply, "a reply is the newest entry");
    require(after.size() <= std::min(before.size() + 1, maxEntries), "the conversation stays short");
    require(after.sliced(1) == before.first(after.size() - 1), "the rest of the conversation stays");

    const bool wasShown = archive.wasShown(message.id);
    archive.markShown(message, now);
    require(archive.wasShown(message.id), "a message is shown once");
    require(wasShown || archive.acknowledged() == message.id, "a message is acknowledged when it is shown");
    require(wasShown || archive.history(now).size() <= maxEntries, "the conversation stays short");
    require(withoutArchive(preferences.stored) == withoutArchive(stored), "other preferences stay");
    return 0;
}
