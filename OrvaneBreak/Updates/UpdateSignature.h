// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <array>
#include <optional>

/// Whether an archive is the makers'. Pure functions; any thread.
namespace UpdateSignature {

/// An Ed25519 key.
using PublicKey = std::array<unsigned char, 32>;

/// The key in a base64 text; absent when that holds anything else than 32 bytes, or only zeros, which is how
/// an unconfigured build says that it has none.
[[nodiscard]] std::optional<PublicKey> parsePublicKey(const QByteArray &base64);

/// Whether `archive` has exactly the announced length and `signature` is the one of the whole of it by the
/// owner of `key`. Anything may be given.
[[nodiscard]] bool verify(QByteArrayView archive, qint64 announcedLength, QByteArrayView signature,
                          const PublicKey &key);

} // namespace UpdateSignature
