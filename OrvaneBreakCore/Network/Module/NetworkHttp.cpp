// SPDX-License-Identifier: GPL-3.0-or-later
#include "NetworkHttp.h"

#include "SpareDescriptors.h"

#include <QPointer>
#include <QTimer>
#include <QUrl>

#include <utility>

namespace {

constexpr qint64 maxBodySize = 1'048'576;

/// One exchange, which deletes itself when it has ended.
class Exchange final : public QObject
{
public:
    Exchange(TransferLoop &loop, QObject &owner, Transfer::Request request, std::chrono::milliseconds limit,
             QObject &context, Http::Completion completion)
        : QObject(&owner)
        , m_context(&context)
        , m_completion(std::move(completion))
        , m_transfer(std::make_unique<Transfer>(
              loop, std::move(request),
              Transfer::Receiver{[this](const QByteArray &bytes) { receive(bytes); },
                                 [this](Transfer::End end) { finish(end == Transfer::End::Complete); }}))
    {
        QTimer::singleShot(limit, Qt::PreciseTimer, this, [this] { finish(false); });
        connect(&context, &QObject::destroyed, this, [this] { finish(false); });
    }

private:
    void receive(const QByteArray &bytes)
    {
        m_body += bytes;
        if (m_body.size() > maxBodySize)
            finish(false);
    }

    void finish(bool isWhole)
    {
        if (!m_transfer)
            return;
        const int status = m_transfer->status();
        m_transfer.reset();
        deleteLater();
        if (m_context)
            m_completion(isWhole ? std::optional(HttpAnswer{status, m_body}) : std::nullopt);
    }

    QPointer<QObject> m_context;
    Http::Completion m_completion;
    QByteArray m_body;
    std::unique_ptr<Transfer> m_transfer;
};

} // namespace

void NetworkHttp::get(const QUrl &url, std::chrono::milliseconds limit, QObject &context,
                      Completion completion)
{
    exchange({url, std::nullopt, 0, {}}, limit, context, std::move(completion));
}

void NetworkHttp::post(const QUrl &url, const QByteArray &body, std::chrono::milliseconds limit,
                       QObject &context, Completion completion, Departure departure)
{
    exchange({url, body, 0, std::move(departure)}, limit, context, std::move(completion));
}

void NetworkHttp::exchange(Transfer::Request request, std::chrono::milliseconds limit, QObject &context,
                           Completion completion)
{
    if (isAllowed(request.url) && SpareDescriptors::sufficeForThread())
        new Exchange(m_loop, m_exchanges, std::move(request), limit, context, std::move(completion));
    else
        completeWithoutAnswer(context, std::move(completion));
}
