// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateSignature.h"

std::optional<Ed25519::PublicKey> UpdateSignature::parsePublicKey(const QByteArray &base64)
{
    const std::optional<Ed25519::PublicKey> key = Ed25519::publicKey(base64.trimmed());
    return key == Ed25519::PublicKey{} ? std::nullopt : key;
}

bool UpdateSignature::verify(QByteArrayView archive, qint64 announcedLength, QByteArrayView signature,
                             const Ed25519::PublicKey &key)
{
    return archive.size() == announcedLength && Ed25519::verify(archive, signature, key);
}
