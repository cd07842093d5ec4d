// SPDX-License-Identifier: GPL-3.0-or-later
#include "Delivery.h"

#include <QTcpSocket>
#include <QTimer>

#include <utility>

namespace {

constexpr qsizetype spacesAtOnce = 65536;

} // namespace

Delivery::Delivery(QHttpServerResponder responder, HttpAnswer answer, QTcpSocket *connection)
    : QObject(connection)
    , m_responder(std::move(responder))
    , m_answer(std::move(answer))
    , m_connection(connection)
{
    QTimer::singleShot(m_answer.delay, this, &Delivery::begin);
}

void Delivery::begin()
{
    writeHead();
    switch (m_answer.delivery) {
    case DeliveryKind::Whole:
        m_responder.writeBody(m_answer.body);
        deleteLater();
        break;
    case DeliveryKind::Drip:
        drip();
        break;
    case DeliveryKind::CloseHalfway:
        closeHalfway();
        break;
    case DeliveryKind::WithoutEnd:
        m_responder.writeBody(m_answer.body);
        connect(m_connection, &QTcpSocket::bytesWritten, this, &Delivery::keepSpacesFlowing);
        break;
    }
}

void Delivery::writeHead()
{
    m_responder.writeStatusLine(static_cast<QHttpServerResponder::StatusCode>(m_answer.status));
    for (const auto &[name, value] : std::as_const(m_answer.headers))
        m_responder.writeHeader(name, value);
    if (m_answer.delivery == DeliveryKind::WithoutEnd)
        m_responder.writeHeader("Connection", "close");
    else
        m_responder.writeHeader("Content-Length", QByteArray::number(m_answer.body.size()));
}

void Delivery::drip()
{
    if (m_dripped == m_answer.body.size()) {
        deleteLater();
        return;
    }
    m_responder.writeBody(m_answer.body.sliced(m_dripped, 1));
    ++m_dripped;
    QTimer::singleShot(m_answer.pause, this, &Delivery::drip);
}

void Delivery::closeHalfway()
{
    m_responder.writeBody(m_answer.body.first(m_answer.body.size() / 2));
    m_connection->disconnectFromHost();
}

void Delivery::keepSpacesFlowing()
{
    if (m_connection->bytesToWrite() < spacesAtOnce)
        m_connection->write(QByteArray(spacesAtOnce, ' '));
}
