// SPDX-License-Identifier: GPL-3.0-or-later
#include "CheckInClaims.h"

#include "SigningKey.h"

using namespace Qt::StringLiterals;

CheckInClaims CheckInClaims::fromMembers(const QJsonObject &members)
{
    return {.nonce = members["n"_L1].toString(),
            .time = members["ts"_L1].toInteger(),
            .id = members["mid"_L1].toInteger(),
            .text = members["msg"_L1].toString()};
}

QByteArray CheckInClaims::canonicalText() const
{
    return "v2|" + nonce.toUtf8() + '|' + QByteArray::number(time) + '|' + QByteArray::number(id) + '|' +
           text.toUtf8().toBase64();
}

QJsonObject CheckInClaims::signedMembers(const SigningKey &key) const
{
    const QByteArray signature =
        key.signature(canonicalText())
            .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
    return {{u"n"_s, nonce},
            {u"ts"_s, time},
            {u"mid"_s, id},
            {u"msg"_s, text},
            {u"sig"_s, QString::fromLatin1(signature)}};
}
