// SPDX-License-Identifier: GPL-3.0-or-later
#include "Ed25519.h"

#include <sodium.h>

#include <algorithm>

static_assert(std::tuple_size_v<Ed25519::PublicKey> == crypto_sign_PUBLICKEYBYTES);
static_assert(Ed25519::signatureSize == crypto_sign_BYTES);

namespace {

const unsigned char *bytesOf(QByteArrayView view)
{
    return reinterpret_cast<const unsigned char *>(view.data());
}

} // namespace

std::optional<Ed25519::PublicKey> Ed25519::publicKey(const QByteArray &base64)
{
    const auto decoded = QByteArray::fromBase64Encoding(base64, QByteArray::AbortOnBase64DecodingErrors);
    PublicKey key = {};
    if (!decoded || (*decoded).size() != static_cast<qsizetype>(key.size()))
        return std::nullopt;
    std::copy_n(bytesOf(*decoded), key.size(), key.begin());
    return key;
}

bool Ed25519::verify(QByteArrayView message, QByteArrayView signature, const PublicKey &key)
{
    return signature.size() == signatureSize && sodium_init() >= 0 &&
           crypto_sign_verify_detached(bytesOf(signature), bytesOf(message),
                                       static_cast<unsigned long long>(message.size()), key.data()) == 0;
}
