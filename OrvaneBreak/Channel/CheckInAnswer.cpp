// SPDX-License-Identifier: GPL-3.0-or-later
#include "CheckInAnswer.h"

#include "Ed25519.h"
#include "StrictJson.h"

#include <QStringDecoder>

#include <cmath>
#include <optional>
#include <string>

namespace {

constexpr long double freshnessSeconds = 600;
constexpr int base64Group = 4;

/// The members of an answer; every other member is ignored.
struct Answer
{
    std::string nonce;
    qint64 timestamp = 0;
    qint64 id = 0;
    std::string message;
    std::string signature;
};

std::optional<Answer> parse(const QByteArray &body)
{
    const std::optional<StrictJson> json = StrictJson::parseObject(body);
    if (!json)
        return std::nullopt;
    const auto nonce = json->text("n");
    const auto timestamp = json->integer("ts");
    const auto id = json->integer("mid");
    const auto message = json->text("msg");
    const auto signature = json->text("sig");
    if (!nonce || !timestamp || !id || !message || !signature)
        return std::nullopt;
    return Answer{*nonce, *timestamp, *id, *message, *signature};
}

std::optional<QByteArray> decodedBase64(QByteArray text)
{
    text.replace('-', '+').replace('_', '/');
    while (text.size() % base64Group != 0)
        text += '=';
    auto result = QByteArray::fromBase64Encoding(text, QByteArray::Base64Encoding |
                                                           QByteArray::AbortOnBase64DecodingErrors);
    if (!result)
        return std::nullopt;
    return *result;
}

bool isFresh(qint64 timestamp, Date now)
{
    const long double seconds = std::chrono::duration<long double>(now.time_since_epoch()).count();
    return std::abs(seconds - static_cast<long double>(timestamp)) < freshnessSeconds;
}

/// Converts UTF-8 and keeps a leading byte order mark, which QString::fromUtf8() drops.
QString decodedUtf8(const std::string &text)
{
    QStringDecoder decode(QStringDecoder::Utf8, QStringConverter::Flag::ConvertInitialBom);
    return decode(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
}

} // namespace

QByteArray canonicalCheckInText(std::string_view nonce, qint64 timestamp, qint64 id, std::string_view message)
{
    const QByteArray encoded = QByteArray(message.data(), static_cast<qsizetype>(message.size())).toBase64();
    return "v2|" + QByteArray(nonce.data(), static_cast<qsizetype>(nonce.size())) + '|' +
           QByteArray::number(timestamp) + '|' + QByteArray::number(id) + '|' + encoded;
}

CheckInVerdict judgeCheckInAnswer(const QByteArray &body, const QString &nonce,
                                  const QByteArray &publicKeyBase64, Date now)
{
    const std::optional<Answer> answer = parse(body);
    if (!answer)
        return CheckInRefusal::Malformed;
    if (answer->nonce != nonce.toStdString())
        return CheckInRefusal::ForeignNonce;
    const std::optional<QByteArray> signature = decodedBase64(QByteArray::fromStdString(answer->signature));
    if (!signature)
        return CheckInRefusal::SignatureEncoding;
    const std::optional<Ed25519::PublicKey> key = Ed25519::publicKey(publicKeyBase64);
    if (!key)
        return CheckInRefusal::PublicKey;
    const QByteArray canonical =
        canonicalCheckInText(answer->nonce, answer->timestamp, answer->id, answer->message);
    if (!Ed25519::verify(canonical, *signature, *key))
        return CheckInRefusal::Signature;
    if (!isFresh(answer->timestamp, now))
        return CheckInRefusal::Stale;
    if (answer->id < 1 || answer->message.empty())
        return std::monostate();
    return ServerMessage{answer->id, decodedUtf8(answer->message)};
}
