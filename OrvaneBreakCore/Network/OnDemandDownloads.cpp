// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnDemandDownloads.h"

#include <QObject>
#include <QUrl>

#include <utility>

namespace {

/// An exchange with nobody.
class BrokenExchange final : public QObject, public Downloads::Exchange
{
public:
    explicit BrokenExchange(Downloads::Receiver receiver)
    {
        QMetaObject::invokeMethod(
            this, [receiver = std::move(receiver)] { receiver.onEnd(Downloads::End::Broken); },
            Qt::QueuedConnection);
    }
};

} // namespace

OnDemandDownloads::OnDemandDownloads(std::function<const NetworkModule *()> load)
    : m_load(std::move(load))
{
}

std::unique_ptr<Downloads::Exchange> OnDemandDownloads::get(const QUrl &url, qint64 offset, Receiver receiver)
{
    if (!m_downloads) {
        if (const NetworkModule *module = m_load())
            m_downloads = module->makeDownloads();
    }
    if (m_downloads)
        return m_downloads->get(url, offset, std::move(receiver));
    return std::make_unique<BrokenExchange>(std::move(receiver));
}
