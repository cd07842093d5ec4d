// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "HttpExchange.h"

#include <QAbstractHttpServer>
#include <QSslConfiguration>

#include <functional>
#include <optional>

/// Hears requests on the loopback interface, over HTTP or HTTPS, and has them answered.
class HttpListener final : public QAbstractHttpServer
{
    Q_OBJECT

public:
    using AnswerRequest = std::function<HttpAnswer(const HttpRequest &)>;

    /// With `tls` it speaks HTTPS and nothing else.
    HttpListener(AnswerRequest answerRequest, const std::optional<QSslConfiguration> &tls);

    /// Listens on 127.0.0.1, on any free port when `port` is 0, and returns its own address without a slash
    /// at the end. Throws std::runtime_error when the port is not to be had.
    [[nodiscard]] QString start(quint16 port);

protected:
    bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override;
    void missingHandler(const QHttpServerRequest &request, QTcpSocket *socket) override;

private:
    AnswerRequest m_answerRequest;
    bool m_isSecure;
};
