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
    explicit ScriptedServer(const QHostAddress &address = QHostAddress::LocalHost)
    {
        m_server.listen(address);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (m_server.hasPendingConnections())
                accept();
        });
    }

    [[nodiscard]] QUrl url() const
    {
        QUrl url(QStringLiteral("http://127.0.0.1:%1/api").arg(m_server.serverPort()));
        url.setHost(m_server.serverAddress().toString());
        return url;
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
    /// Sent to each connection that has no reply.
    QByteArray standingReply;
    /// Sent after the reply, for ever.
    QByteArray endless;
    /// Closes the connection after the reply.
    bool closes = false;
    QByteArray received;
    int connections = 0;
    QTcpSocket *socket = nullptr;

private:
    void accept()
    {
        socket = m_server.nextPendingConnection();
        ++connections;
        connect(socket, &QTcpSocket::readyRead, this, [this, from = socket] { read(from); });
        connect(socket, &QTcpSocket::bytesWritten, this, [this] { repeat(); });
    }

    void read(QTcpSocket *from)
    {
        received += from->readAll();
        if (!isWhole())
            return;
        socket->write(reply.isEmpty() ? standingReply : std::exchange(reply, {}));
        if (!endless.isEmpty())
            repeat();
        if (closes)
            socket->disconnectFromHost();
    }

    void repeat()
    {
        constexpr qint64 queued = 65'536;
        while (!endless.isEmpty() && socket->isOpen() && socket->bytesToWrite() < queued)
            socket->write(endless.repeated(static_cast<int>(queued / endless.size())));
    }

    QTcpServer m_server;
};

/// A complete HTTP answer.
inline QByteArray answerWith(const QByteArray &status, const QByteArray &body)
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" +
           body;
}
