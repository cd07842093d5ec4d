// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Ed25519.h"

/// Whether an archive is the makers'. Pure functions; any thread.
namespace UpdateSignature {

/// The key in a base64 text; absent when that holds anything else than 32 bytes, or only zeros, which is how
/// an unconfigured build says that it has none.
[[nodiscard]] std::optional<Ed25519::PublicKey> parsePublicKey(const QByteArray &base64);

/// Whether `archive` has exactly the announced length and `signature` is the one of the whole of it by the
/// owner of `key`. Anything may be given.
[[nodiscard]] bool verify(QByteArrayView archive, qint64 announcedLength, QByteArrayView signature,
                          const Ed25519::PublicKey &key);

} // namespace UpdateSignature
