// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

class SigningKey;

/// What a check-in answer says, and what its signature vouches for.
struct CheckInClaims
{
    QString nonce;   ///< The nonce of the request.
    qint64 time = 0; ///< Whole seconds since 1970-01-01 UTC.
    qint64 id = 0;   ///< The message delivered; 0 when there is none.
    QString text;    ///< Empty when there is none.

    /// The claims that the members "n", "ts", "mid" and "msg" make.
    [[nodiscard]] static CheckInClaims fromMembers(const QJsonObject &members);

    /// The bytes that are signed: "v2|nonce|time|id|base64 of the text in UTF-8".
    [[nodiscard]] QByteArray canonicalText() const;

    /// The members of the answer: "n", "ts", "mid", "msg", and "sig" by `key` as base64url without padding.
    [[nodiscard]] QJsonObject signedMembers(const SigningKey &key) const;
};
