// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "CheckInAnswer.h"

#include <QDateTime>
#include <QList>
#include <QString>

class Preferences;

/// An entry of the conversation with the makers.
struct ArchivedMessage
{
    qint64 id = 0; ///< The makers' id, or minus the Unix time in seconds for a reply of the user.
    QString body;
    QDateTime date; ///< When it was archived on this machine.
    bool mine = false;

    bool operator==(const ArchivedMessage &) const = default;
};

/// The conversation between the makers and the user, in the preferences: the ids of the last 50 messages that
/// were shown ("OBShownMessages"), the id to acknowledge ("OBAckMessage") and the last 50 entries of the
/// conversation ("OBMessageHistory"). Damaged values read as empty, and are overwritten by the next change.
/// User-interface thread only.
class MessageArchive
{
public:
    /// `preferences` outlives this object.
    explicit MessageArchive(Preferences &preferences);

    /// Whether the makers' message `id` is among the last 50 that were shown.
    [[nodiscard]] bool wasShown(qint64 id) const;

    /// The id to acknowledge; absent if no message was shown yet.
    [[nodiscard]] std::optional<qint64> acknowledged() const;

    /// Records that the message was shown, acknowledges it and adds it to the conversation. Does nothing if
    /// `wasShown()`.
    void markShown(const ServerMessage &message, const QDateTime &now);

    /// Adds a reply of the user.
    void addReply(const QString &text, const QDateTime &now);

    /// The conversation, newest first. An entry without an id or a text is left out; one without a date gets
    /// the date `now`.
    [[nodiscard]] QList<ArchivedMessage> history(const QDateTime &now) const;

private:
    void append(qint64 id, const QString &body, const QDateTime &now, bool mine);

    Preferences &m_preferences;
};
