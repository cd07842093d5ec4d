// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

#include <optional>

/// A message from the makers to the users.
struct Message
{
    qint64 id = 0;
    QString text;
};

/// The published messages, in the order of their publication, kept in one JSON file. Every operation reads
/// the file anew, so a running server sees at its next request what a command published.
class Outbox final
{
public:
    explicit Outbox(QString file);

    /// Makes this the newest message; an earlier one with the same id is replaced. Throws std::runtime_error
    /// when the id is below 1 or the text is empty, since no client would show it.
    void publish(const Message &message);

    /// Takes a message back; false when there is none with this id.
    bool withdraw(qint64 id);

    /// The message published last, none when there is none.
    [[nodiscard]] std::optional<Message> newest() const;

private:
    [[nodiscard]] QList<Message> messages() const;
    void setMessages(const QList<Message> &messages) const;

    QString m_file;
};
