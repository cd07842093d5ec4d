// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <array>
#include <optional>

/// Ed25519 signatures. Pure functions; any thread.
namespace Ed25519 {

using PublicKey = std::array<unsigned char, 32>;

/// The size of a signature in bytes.
constexpr qsizetype signatureSize = 64;

/// The key in a base64 text; absent unless the text decodes to exactly 32 bytes.
[[nodiscard]] std::optional<PublicKey> publicKey(const QByteArray &base64);

/// Whether `signature` is a valid signature of `message` by the owner of `key`. Any input is safe.
[[nodiscard]] bool verify(QByteArrayView message, QByteArrayView signature, const PublicKey &key);

} // namespace Ed25519
