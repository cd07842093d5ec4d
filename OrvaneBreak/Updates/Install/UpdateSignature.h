// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Ed25519.h"

/// The makers' signatures of archives. Pure functions; any thread.
namespace UpdateSignature {

/// Decodes a base64 key; absent when it is not 32 bytes long, or all zeros as in an unconfigured build.
[[nodiscard]] std::optional<Ed25519::PublicKey> parsePublicKey(const QByteArray &base64);

/// Whether `archive` has the announced length, and `signature` is a valid signature of all of it for `key`.
/// Any bytes may be given.
[[nodiscard]] bool verify(QByteArrayView archive, qint64 announcedLength, QByteArrayView signature,
                          const Ed25519::PublicKey &key);

} // namespace UpdateSignature
