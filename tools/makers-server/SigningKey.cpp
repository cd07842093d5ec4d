// SPDX-License-Identifier: GPL-3.0-or-later
#include "SigningKey.h"

#include <QFile>

#include <sodium.h>

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {

unsigned char *bytes(QByteArray &data)
{
    return reinterpret_cast<unsigned char *>(data.data());
}

const unsigned char *bytes(const QByteArray &data)
{
    return reinterpret_cast<const unsigned char *>(data.constData());
}

QByteArray newSeed()
{
    QByteArray seed(crypto_sign_SEEDBYTES, Qt::Uninitialized);
    randombytes_buf(seed.data(), crypto_sign_SEEDBYTES);
    return seed;
}

[[noreturn]] void fail(const QString &path, const QString &reason)
{
    throw std::runtime_error((path + u": "_s + reason).toStdString());
}

void keepNewSeed(const QString &path)
{
    QFile file(path);
    const bool isKept =
        file.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFile::ReadOwner | QFile::WriteOwner) &&
        file.write(newSeed().toBase64() + '\n') > 0 && file.flush();
    if (!isKept)
        fail(path, file.errorString());
}

QByteArray keptSeed(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(path, file.errorString());
    const QFile::Permissions others =
        QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    if ((file.permissions() & others) != 0)
        fail(path, u"others may read or write this private key; make it mode 0600"_s);
    const auto seed =
        QByteArray::fromBase64Encoding(file.readAll().trimmed(), QByteArray::AbortOnBase64DecodingErrors);
    if (!seed || seed.decoded.size() != crypto_sign_SEEDBYTES)
        fail(path, u"this is no base64 text of 32 bytes"_s);
    return seed.decoded;
}

} // namespace

SigningKey SigningKey::keptIn(const QString &path)
{
    if (!QFile::exists(path))
        keepNewSeed(path);
    return SigningKey(keptSeed(path));
}

SigningKey SigningKey::generated()
{
    return SigningKey(newSeed());
}

SigningKey::SigningKey(const QByteArray &seed)
    : m_publicKey(crypto_sign_PUBLICKEYBYTES, '\0')
    , m_secretKey(crypto_sign_SECRETKEYBYTES, '\0')
{
    crypto_sign_seed_keypair(bytes(m_publicKey), bytes(m_secretKey), bytes(seed));
}

QByteArray SigningKey::publicKey() const
{
    return m_publicKey.toBase64();
}

QByteArray SigningKey::signature(const QByteArray &text) const
{
    QByteArray result(crypto_sign_BYTES, '\0');
    crypto_sign_detached(bytes(result), nullptr, bytes(text), static_cast<unsigned long long>(text.size()),
                         bytes(m_secretKey));
    return result;
}
