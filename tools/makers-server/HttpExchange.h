// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <chrono>
#include <utility>

/// Header fields, or what is to become some, in their order.
using HeaderFields = QList<std::pair<QByteArray, QByteArray>>;

/// One request as it was received.
struct HttpRequest
{
    QByteArray method; ///< In upper case.
    QString path;
    QString query; ///< Without its question mark; empty when there is none.
    HeaderFields headers;
    QByteArray body;
};

/// How the bytes of an answer travel.
enum class DeliveryKind
{
    Whole,        ///< At once.
    Drip,         ///< One byte after the other, `pause` apart.
    CloseHalfway, ///< The announced length is that of the whole body; the connection ends after half of it.
    WithoutEnd,   ///< The body, then spaces for as long as the client reads, without an announced length.
};

/// One answer and how it travels.
struct HttpAnswer
{
    int status = 200;
    HeaderFields headers;
    QByteArray body;
    DeliveryKind delivery = DeliveryKind::Whole;
    std::chrono::milliseconds delay{0}; ///< Silence before the first byte.
    std::chrono::milliseconds pause{0}; ///< Between two bytes of a drip.
};
