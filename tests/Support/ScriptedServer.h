// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <utility>

/// A TCP server on loopback that sends `reply`, byte for byte, once it has received a complete request.
class ScriptedServer : public QObject
{
public:
    ScriptedServer()
    {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            socket = m_server.nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this] {
                received += socket->readAll();
                if (!reply.isEmpty() && isWhole())
                    socket->write(std::exchange(reply, {}));
            });
        });
    }

    [[nodiscard]] QUrl url() const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1/api").arg(m_server.serverPort()));
    }

    [[nodiscard]] bool isWhole() const
    {
        const qsizetype head = received.indexOf("\r\n\r\n");
        static const QRegularExpression length(QStringLiteral("content-length: (\\d+)"),
                                               QRegularExpression::CaseInsensitiveOption);
        const qsizetype expected = length.match(QString::fromLatin1(received)).captured(1).toLongLong();
        return head >= 0 && received.size() >= head + 4 + expected;
    }

    QByteArray reply;
    QByteArray received;
    QTcpSocket *socket = nullptr;

private:
    QTcpServer m_server;
};

/// A complete HTTP answer.
inline QByteArray answerWith(const QByteArray &status, const QByteArray &body)
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" +
           body;
}
