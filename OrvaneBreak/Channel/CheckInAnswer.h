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

/// Why an answer to a check-in is rejected, in the order of the checks.
enum class CheckInRefusal
{
    Malformed,         ///< Not a JSON object with the five members in their types.
    ForeignNonce,      ///< The answer to another request.
    SignatureEncoding, ///< "sig" is not base64url.
    PublicKey,         ///< The configured key is invalid.
    Signature,         ///< Not a signature of this answer with the configured key.
    Stale,             ///< The timestamp differs from the clock by ten minutes or more.
};

/// The result of checking an answer: no message, a message, or a rejection.
using CheckInVerdict = std::variant<std::monostate, ServerMessage, CheckInRefusal>;

/// Checks the body of the answer to the request with `nonce`. A pure function: no state, no log.
/// `publicKeyBase64` is the makers' Ed25519 key. The body may be any bytes.
[[nodiscard]] CheckInVerdict judgeCheckInAnswer(const QByteArray &body, const QString &nonce,
                                                const QByteArray &publicKeyBase64, Date now);

/// The bytes that the makers sign for such an answer.
[[nodiscard]] QByteArray canonicalCheckInText(std::string_view nonce, qint64 timestamp, qint64 id,
                                              std::string_view message);
