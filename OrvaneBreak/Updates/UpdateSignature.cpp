// SPDX-License-Identifier: GPL-3.0-or-later
#include "Updates/UpdateSignature.h"

#include <sodium.h>

#include <algorithm>

namespace {

const unsigned char *bytes(QByteArrayView view)
{
    return reinterpret_cast<const unsigned char *>(view.data());
}

} // namespace

std::optional<UpdateSignature::PublicKey> UpdateSignature::parsePublicKey(const QByteArray &base64)
{
    static_assert(std::tuple_size_v<PublicKey> == crypto_sign_PUBLICKEYBYTES);
    const auto decoded =
        QByteArray::fromBase64Encoding(base64.trimmed(), QByteArray::AbortOnBase64DecodingErrors);
    PublicKey key = {};
    if (!decoded || (*decoded).size() != static_cast<qsizetype>(key.size()))
        return std::nullopt;
    std::copy_n(bytes(*decoded), key.size(), key.begin());
    if (key == PublicKey{})
        return std::nullopt;
    return key;
}

bool UpdateSignature::verify(QByteArrayView archive, qint64 announcedLength, QByteArrayView signature,
                             const PublicKey &key)
{
    return archive.size() == announcedLength &&
           signature.size() == static_cast<qsizetype>(crypto_sign_BYTES) && sodium_init() >= 0 &&
           crypto_sign_verify_detached(bytes(signature), bytes(archive),
                                       static_cast<unsigned long long>(archive.size()), key.data()) == 0;
}
