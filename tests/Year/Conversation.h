// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "MessageArchive.h"

#include <QJsonObject>
#include <QList>

#include <optional>

/// A model of the stored conversation with the makers.
class Conversation
{
public:
    /// A check-in has brought a valid message.
    void receive(const ServerMessage &message);

    /// The user has seen `message`.
    void see(const ServerMessage &message, const QDateTime &now);

    /// The user has answered.
    void reply(const QString &text, const QDateTime &now);

    /// The program has ended: an unseen message is forgotten.
    void forget() { pending.reset(); }

    /// The first difference from the stored preferences and from `history`, newest first; empty if there is
    /// none.
    [[nodiscard]] QString difference(const QJsonObject &preferences,
                                     const QList<ArchivedMessage> &history) const;

    std::optional<ServerMessage> pending;
    QList<qint64> seen;             ///< The last 50.
    QList<ArchivedMessage> entries; ///< The last 50, oldest first.

private:
    void append(const ArchivedMessage &entry);
};
