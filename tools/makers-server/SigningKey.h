// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

/// An Ed25519 key pair that check-in answers are signed with.
class SigningKey final
{
public:
    /// The key pair kept in `path` as the base64 text of its 32-byte seed. Where there is no such file it
    /// makes a new pair and keeps it there, readable by its owner alone. Throws std::runtime_error when the
    /// file cannot be read or written, is damaged, or may be read by others.
    [[nodiscard]] static SigningKey keptIn(const QString &path);

    /// A new pair that is kept nowhere.
    [[nodiscard]] static SigningKey generated();

    /// The base64 text, 44 characters with padding, of the 32-byte public key.
    [[nodiscard]] QByteArray publicKey() const;

    /// The 64-byte signature of `text`.
    [[nodiscard]] QByteArray signature(const QByteArray &text) const;

private:
    explicit SigningKey(const QByteArray &seed);

    QByteArray m_publicKey;
    QByteArray m_secretKey;
};
