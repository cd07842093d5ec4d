// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <array>
#include <optional>

/// Signatures by Ed25519. Pure functions; any thread.
namespace Ed25519 {

using PublicKey = std::array<unsigned char, 32>;

/// The bytes of a signature.
constexpr qsizetype signatureSize = 64;

/// The key in a base64 text; absent when that holds anything else than 32 bytes.
[[nodiscard]] std::optional<PublicKey> publicKey(const QByteArray &base64);

/// Whether `signature` is the one of the whole of `message` by the owner of `key`. Anything may be given.
[[nodiscard]] bool verify(QByteArrayView message, QByteArrayView signature, const PublicKey &key);

} // namespace Ed25519
