// SPDX-License-Identifier: GPL-3.0-or-later
#include "NetworkHttp.h"

#include "SafeRequest.h"
#include "SpareDescriptors.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maxBodySize = 1'048'576;

/// One exchange, owned by its reply.
class Exchange final : public QObject
{
public:
    Exchange(QNetworkReply *reply, QObject &context, Http::Completion completion)
        : QObject(reply)
        , m_reply(reply)
        , m_context(&context)
        , m_completion(std::move(completion))
    {
        SafeRequest::checkRedirects(*reply, reply, [reply] { reply->abort(); });
        connect(reply, &QIODevice::readyRead, this, &Exchange::read);
        connect(reply, &QNetworkReply::finished, this, &Exchange::finish);
        connect(&context, &QObject::destroyed, this, [this] { m_reply->abort(); });
    }

private:
    void read()
    {
        // A reply that was aborted is closed.
        if (m_reply->isOpen())
            m_body += m_reply->read(std::min(m_reply->bytesAvailable(), maxBodySize + 1 - m_body.size()));
        if (m_body.size() > maxBodySize && m_reply->isRunning())
            m_reply->abort();
    }

    void finish()
    {
        read();
        m_reply->deleteLater();
        if (!m_context)
            return;
        const QVariant status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        const bool isWhole = status.isValid() && m_body.size() <= maxBodySize && isAnswer(m_reply->error());
        std::exchange(m_completion,
                      nullptr)(isWhole ? std::optional(HttpAnswer{status.toInt(), m_body}) : std::nullopt);
    }

    /// Error statuses are answers as well; connection failures are not.
    static bool isAnswer(QNetworkReply::NetworkError error)
    {
        return error == QNetworkReply::NoError || error >= QNetworkReply::ContentAccessDenied;
    }

    QNetworkReply *m_reply;
    QPointer<QObject> m_context;
    Http::Completion m_completion;
    QByteArray m_body;
};

} // namespace

NetworkHttp::NetworkHttp()
    : m_manager(std::make_unique<QNetworkAccessManager>())
{
}

NetworkHttp::~NetworkHttp() = default;

void NetworkHttp::get(const QUrl &url, std::chrono::milliseconds limit, QObject &context,
                      Completion completion)
{
    exchange(url, limit, context, std::move(completion),
             [this](const QNetworkRequest &request) { return m_manager->get(request); });
}

void NetworkHttp::post(const QUrl &url, const QByteArray &body, std::chrono::milliseconds limit,
                       QObject &context, Completion completion)
{
    exchange(url, limit, context, std::move(completion), [this, &body](QNetworkRequest request) {
        // Qt would log a warning and set the same type.
        request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/x-www-form-urlencoded"_s);
        return m_manager->post(request, body);
    });
}

template <typename Send>
void NetworkHttp::exchange(const QUrl &url, std::chrono::milliseconds limit, QObject &context,
                           Completion completion, Send send)
{
    if (!isAllowed(url) || !SpareDescriptors::sufficeForThread()) {
        completeWithoutAnswer(context, std::move(completion));
        return;
    }
    QNetworkReply *reply = send(SafeRequest::to(url));
    new Exchange(reply, context, std::move(completion));
    // Qt's transfer timeout only covers inactivity: a slow server would never reach it.
    QTimer::singleShot(limit, reply, &QNetworkReply::abort);
}
