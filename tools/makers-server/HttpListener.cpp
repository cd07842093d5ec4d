// SPDX-License-Identifier: GPL-3.0-or-later
#include "HttpListener.h"

#include "Delivery.h"

#include <QHttpServerRequest>
#include <QMetaEnum>
#include <QTcpSocket>

#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

HttpRequest received(const QHttpServerRequest &request)
{
    const auto methods = QMetaEnum::fromType<QHttpServerRequest::Method>();
    HttpRequest result{.method = QByteArray(methods.valueToKey(static_cast<int>(request.method()))).toUpper(),
                       .path = request.url().path(),
                       .query = request.url().query(),
                       .headers = {},
                       .body = request.body()};
    const auto headers = request.headers();
    for (const auto &[name, value] : headers)
        result.headers.emplaceBack(name, value);
    return result;
}

} // namespace

HttpListener::HttpListener(AnswerRequest answerRequest, const std::optional<QSslConfiguration> &tls)
    : m_answerRequest(std::move(answerRequest))
    , m_isSecure(tls.has_value())
{
    if (tls)
        sslSetup(*tls);
}

QString HttpListener::start(quint16 port)
{
    const quint16 used = listen(QHostAddress::LocalHost, port);
    if (used == 0)
        throw std::runtime_error("port " + std::to_string(port) + " is not to be had");
    return u"%1://127.0.0.1:%2"_s.arg(m_isSecure ? u"https"_s : u"http"_s).arg(used);
}

bool HttpListener::handleRequest(const QHttpServerRequest &request, QTcpSocket *socket)
{
    // The connection owns it.
    new Delivery(makeResponder(request, socket), m_answerRequest(received(request)), socket);
    return true;
}

void HttpListener::missingHandler(const QHttpServerRequest &, QTcpSocket *)
{
    // Never called: every request is handled.
}
