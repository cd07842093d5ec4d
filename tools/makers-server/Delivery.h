// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "HttpExchange.h"

#include <QHttpServerResponder>
#include <QObject>

class QTcpSocket;

/// Sends one answer the way it says, and is deleted when that is done or the connection is.
class Delivery final : public QObject
{
    Q_OBJECT

public:
    /// `connection` becomes the parent. Nothing is sent before control returns to the event loop.
    Delivery(QHttpServerResponder responder, HttpAnswer answer, QTcpSocket *connection);

private:
    void begin();
    void writeHead();
    void drip();
    void closeHalfway();
    void keepSpacesFlowing();

    QHttpServerResponder m_responder;
    HttpAnswer m_answer;
    QTcpSocket *m_connection;
    qsizetype m_dripped = 0;
};
