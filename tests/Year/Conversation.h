// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "MessageArchive.h"

#include <QJsonObject>
#include <QList>

#include <optional>

/// What the program has to remember of the conversation with the makers, worked out without its archive.
class Conversation
{
public:
    /// A check-in has brought a message that is to be believed.
    void receive(const ServerMessage &message);

    /// The user has seen `message`.
    void see(const ServerMessage &message, const QDateTime &now);

    /// The user has answered.
    void reply(const QString &text, const QDateTime &now);

    /// The program has ended: what was not seen is forgotten.
    void forget() { pending.reset(); }

    /// Empty when `preferences` and `history`, newest first, hold the same.
    [[nodiscard]] QString difference(const QJsonObject &preferences,
                                     const QList<ArchivedMessage> &history) const;

    std::optional<ServerMessage> pending;
    QList<qint64> seen;             ///< The last 50.
    QList<ArchivedMessage> entries; ///< The last 50, oldest first.

private:
    void append(const ArchivedMessage &entry);
};
