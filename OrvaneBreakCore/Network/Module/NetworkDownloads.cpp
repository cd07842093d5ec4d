// SPDX-License-Identifier: GPL-3.0-or-later
#include "NetworkDownloads.h"

#include "Http.h"
#include "SafeRequest.h"
#include "SpareDescriptors.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QRegularExpression>

#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using End = Downloads::End;

constexpr qint64 bufferSize = 1'048'576;
constexpr qint64 pieceSize = 65'536;
constexpr int wholeFile = 200;
constexpr int partOfFile = 206;
constexpr int requestTimeout = 408;
constexpr int rangeNotSatisfiable = 416;
constexpr int tooManyRequests = 429;
constexpr int serverError = 500;

/// The first byte that Content-Range names; absent without a valid one.
std::optional<qint64> rangeBegin(const QNetworkReply &reply)
{
    static const QRegularExpression form(uR"(\Abytes (\d{1,18})-\d+/(?:\d+|\*)\z)"_s);
    const auto match = form.match(QString::fromLatin1(reply.rawHeader("Content-Range")));
    return match.hasMatch() ? std::optional(match.captured(1).toLongLong()) : std::nullopt;
}

End endOfStatus(int status)
{
    if (status == rangeNotSatisfiable || status == partOfFile)
        return End::OtherRange;
    const bool isTemporary = status >= serverError || status == requestTimeout || status == tooManyRequests;
    return isTemporary ? End::Broken : End::Refused;
}

class NetworkExchange final : public QObject, public Downloads::Exchange
{
public:
    NetworkExchange(qint64 offset, Downloads::Receiver receiver)
        : m_offset(offset)
        , m_receiver(std::make_shared<const Downloads::Receiver>(std::move(receiver)))
    {
    }

    ~NetworkExchange() override { dropReply(); }
    NetworkExchange(const NetworkExchange &) = delete;
    NetworkExchange &operator=(const NetworkExchange &) = delete;

    void watch(QNetworkReply *reply)
    {
        m_reply = reply;
        reply->setReadBufferSize(bufferSize);
        SafeRequest::checkRedirects(*reply, this, [this] { end(End::Refused); });
        connect(reply, &QIODevice::readyRead, this, &NetworkExchange::read);
        connect(reply, &QNetworkReply::finished, this, &NetworkExchange::finish);
    }

    void end(End end)
    {
        dropReply();
        const auto receiver = m_receiver;
        receiver->onEnd(end);
    }

private:
    void read()
    {
        // The receiver may destroy this.
        const QPointer self(this);
        const auto receiver = m_receiver;
        if (!m_hasBegun)
            begin();
        while (self && m_reply && m_reply->bytesAvailable() > 0) {
            const QByteArray piece = m_reply->read(pieceSize);
            if (piece.isEmpty())
                break;
            receiver->onData(piece);
        }
    }

    void begin()
    {
        const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        const bool isRequestedPart = status == partOfFile && rangeBegin(*m_reply) == m_offset;
        if (status != wholeFile && !isRequestedPart) {
            end(endOfStatus(status));
            return;
        }
        m_hasBegun = true;
        const auto receiver = m_receiver;
        receiver->onBegin(status == wholeFile ? 0 : m_offset);
    }

    void finish()
    {
        const QPointer self(this);
        if (m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid())
            read();
        if (self && m_reply)
            end(m_reply->error() == QNetworkReply::NoError ? End::Complete : End::Broken);
    }

    void dropReply()
    {
        if (!m_reply)
            return;
        QNetworkReply *reply = std::exchange(m_reply, nullptr);
        reply->disconnect(this);
        // Aborted within one of its own signals, the reply would continue and log a warning.
        QMetaObject::invokeMethod(reply, &QNetworkReply::abort, Qt::QueuedConnection);
        reply->deleteLater();
    }

    qint64 m_offset;
    std::shared_ptr<const Downloads::Receiver> m_receiver;
    QPointer<QNetworkReply> m_reply;
    bool m_hasBegun = false;
};

} // namespace

NetworkDownloads::NetworkDownloads(std::chrono::milliseconds inactivityTimeout)
    : m_manager(std::make_unique<QNetworkAccessManager>())
    , m_inactivityTimeout(inactivityTimeout)
{
}

NetworkDownloads::~NetworkDownloads() = default;

std::unique_ptr<Downloads::Exchange> NetworkDownloads::get(const QUrl &url, qint64 offset, Receiver receiver)
{
    auto exchange = std::make_unique<NetworkExchange>(offset, std::move(receiver));
    const bool isAllowed = Http::isAllowed(url);
    if (!isAllowed || !SpareDescriptors::sufficeForThread()) {
        const End end = isAllowed ? End::Broken : End::Refused;
        QMetaObject::invokeMethod(
            exchange.get(), [ended = exchange.get(), end] { ended->end(end); }, Qt::QueuedConnection);
        return exchange;
    }
    QNetworkRequest request = SafeRequest::to(url);
    // Setting the header also turns off Qt's decompression.
    request.setRawHeader("Accept-Encoding", "identity");
    if (offset > 0)
        request.setRawHeader("Range", "bytes=" + QByteArray::number(offset) + '-');
    request.setTransferTimeout(static_cast<int>(m_inactivityTimeout.count()));
    exchange->watch(m_manager->get(request));
    return exchange;
}
