// SPDX-License-Identifier: GPL-3.0-or-later
#include "NetworkDownloads.h"

#include "Http.h"
#include "SpareDescriptors.h"
#include "Transfer.h"

#include <QPointer>
#include <QRegularExpression>
#include <QTimer>
#include <QUrl>

#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using End = Downloads::End;

constexpr int wholeFile = 200;
constexpr int partOfFile = 206;
constexpr int requestTimeout = 408;
constexpr int rangeNotSatisfiable = 416;
constexpr int tooManyRequests = 429;
constexpr int serverError = 500;

/// The first byte that Content-Range names; absent without a valid one.
std::optional<qint64> rangeBegin(const QByteArray &contentRange)
{
    static const QRegularExpression form(uR"(\Abytes (\d{1,18})-\d+/(?:\d+|\*)\z)"_s);
    const auto match = form.match(QString::fromLatin1(contentRange));
    return match.hasMatch() ? std::optional(match.captured(1).toLongLong()) : std::nullopt;
}

End endOfStatus(int status)
{
    if (status == rangeNotSatisfiable || status == partOfFile)
        return End::OtherRange;
    const bool mayPass = status >= serverError || status == requestTimeout || status == tooManyRequests;
    return mayPass ? End::Broken : End::Refused;
}

class NetworkExchange final : public QObject, public Downloads::Exchange
{
public:
    NetworkExchange(qint64 offset, Downloads::Receiver receiver)
        : m_offset(offset)
        , m_receiver(std::make_shared<const Downloads::Receiver>(std::move(receiver)))
    {
        m_inactivity.setSingleShot(true);
        connect(&m_inactivity, &QTimer::timeout, this, [this] { end(End::Broken); });
    }

    void start(TransferLoop &loop, const QUrl &url, std::chrono::milliseconds inactivityTimeout)
    {
        m_inactivity.start(inactivityTimeout);
        m_transfer =
            std::make_unique<Transfer>(loop, Transfer::Request{url, std::nullopt, m_offset, {}},
                                       Transfer::Receiver{[this](const QByteArray &bytes) { receive(bytes); },
                                                          [this](Transfer::End end) { finish(end); }});
    }

    void end(End end)
    {
        m_inactivity.stop();
        m_transfer.reset();
        const auto receiver = m_receiver;
        receiver->onEnd(end);
    }

private:
    void receive(const QByteArray &bytes)
    {
        m_inactivity.start();
        if (begin()) {
            const auto receiver = m_receiver;
            receiver->onData(bytes);
        }
    }

    /// Calls onBegin() once. False if the answer is not the file, or the receiver destroyed this.
    bool begin()
    {
        if (m_hasBegun)
            return true;
        const int status = m_transfer->status();
        const bool isRequestedPart =
            status == partOfFile && rangeBegin(m_transfer->header("Content-Range")) == m_offset;
        if (status != wholeFile && !isRequestedPart) {
            end(endOfStatus(status));
            return false;
        }
        m_hasBegun = true;
        const QPointer self(this);
        const auto receiver = m_receiver;
        receiver->onBegin(status == wholeFile ? 0 : m_offset);
        return !self.isNull();
    }

    void finish(Transfer::End transferEnd)
    {
        if (transferEnd == Transfer::End::Refused)
            end(End::Refused);
        else if (transferEnd == Transfer::End::Broken)
            end(End::Broken);
        else if (begin())
            end(End::Complete);
    }

    qint64 m_offset;
    std::shared_ptr<const Downloads::Receiver> m_receiver;
    std::unique_ptr<Transfer> m_transfer;
    QTimer m_inactivity;
    bool m_hasBegun = false;
};

} // namespace

NetworkDownloads::NetworkDownloads(std::chrono::milliseconds inactivityTimeout)
    : m_inactivityTimeout(inactivityTimeout)
{
}

std::unique_ptr<Downloads::Exchange> NetworkDownloads::get(const QUrl &url, qint64 offset, Receiver receiver)
{
    auto exchange = std::make_unique<NetworkExchange>(offset, std::move(receiver));
    const bool isAllowed = Http::isAllowed(url);
    if (isAllowed && SpareDescriptors::sufficeForThread()) {
        exchange->start(m_loop, url, m_inactivityTimeout);
        return exchange;
    }
    const End end = isAllowed ? End::Broken : End::Refused;
    QMetaObject::invokeMethod(
        exchange.get(), [ended = exchange.get(), end] { ended->end(end); }, Qt::QueuedConnection);
    return exchange;
}
