// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "CheckInAnswer.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <sodium.h>

#include <array>
#include <chrono>

/// The makers in one test, with a key pair of their own.
class Signer
{
public:
    using Seed = std::array<unsigned char, crypto_sign_SEEDBYTES>;

    Signer() { crypto_sign_keypair(m_publicKey.data(), m_privateKey.data()); }

    /// The same keys for the same seed.
    explicit Signer(const Seed &seed)
    {
        crypto_sign_seed_keypair(m_publicKey.data(), m_privateKey.data(), seed.data());
    }

    [[nodiscard]] QByteArray publicKeyBase64() const
    {
        return QByteArray(reinterpret_cast<const char *>(m_publicKey.data()),
                          static_cast<qsizetype>(m_publicKey.size()))
            .toBase64();
    }

    /// The signature of `text` in base64url without padding.
    [[nodiscard]] QByteArray sign(const QByteArray &text) const
    {
        QByteArray signature(crypto_sign_BYTES, '\0');
        crypto_sign_detached(reinterpret_cast<unsigned char *>(signature.data()), nullptr,
                             reinterpret_cast<const unsigned char *>(text.constData()),
                             static_cast<unsigned long long>(text.size()), m_privateKey.data());
        return signature.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
    }

    /// A complete, signed answer to the request with `nonce`.
    [[nodiscard]] QJsonObject answer(const QString &nonce, qint64 timestamp, qint64 id,
                                     const QString &message) const
    {
        const QByteArray canonical =
            canonicalCheckInText(nonce.toStdString(), timestamp, id, message.toStdString());
        return {{QStringLiteral("n"), nonce},
                {QStringLiteral("ts"), timestamp},
                {QStringLiteral("mid"), id},
                {QStringLiteral("msg"), message},
                {QStringLiteral("sig"), QString::fromLatin1(sign(canonical))}};
    }

private:
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> m_publicKey{};
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> m_privateKey{};
};

inline QByteArray jsonBytes(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

inline qint64 unixSeconds(Date date)
{
    return std::chrono::floor<std::chrono::seconds>(date).time_since_epoch().count();
}
