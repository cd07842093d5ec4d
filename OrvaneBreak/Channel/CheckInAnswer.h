// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"

#include <QByteArray>
#include <QString>

#include <string_view>
#include <variant>

/// A message from the makers: an id of at least 1 and a text that is not empty.
struct ServerMessage
{
    qint64 id = 0;
    QString text;

    bool operator==(const ServerMessage &) const = default;
};

/// Why an answer to a check-in is not believed, in the order in which this is looked at.
enum class CheckInRefusal
{
    Malformed,         ///< No JSON object with the five members in their types.
    ForeignNonce,      ///< The answer to another request.
    SignatureEncoding, ///< "sig" is no base64url text.
    PublicKey,         ///< The configured key is none.
    Signature,         ///< Signed by somebody else, or not this text.
    Stale,             ///< The two clocks are ten minutes or more apart.
};

/// What an answer to a check-in comes to: no message, a message, or a refusal.
using CheckInVerdict = std::variant<std::monostate, ServerMessage, CheckInRefusal>;

/// Judges the body of an answer to the request that carried `nonce`. A pure function: no state, no log.
/// `publicKeyBase64` is the makers' Ed25519 key. Any bytes may be given as the body.
[[nodiscard]] CheckInVerdict judgeCheckInAnswer(const QByteArray &body, const QString &nonce,
                                                const QByteArray &publicKeyBase64, Date now);

/// The bytes that the makers sign.
[[nodiscard]] QByteArray canonicalCheckInText(std::string_view nonce, qint64 timestamp, qint64 id,
                                              std::string_view message);
