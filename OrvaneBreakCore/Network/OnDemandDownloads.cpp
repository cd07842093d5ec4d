// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnDemandDownloads.h"

#include <QObject>
#include <QUrl>

#include <utility>

namespace {

/// An exchange that ends as Broken.
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

OnDemandDownloads::OnDemandDownloads(OnDemand<Downloads>::Make make)
    : m_downloads(std::move(make))
{
}

std::unique_ptr<Downloads::Exchange> OnDemandDownloads::get(const QUrl &url, qint64 offset, Receiver receiver)
{
    if (Downloads *downloads = m_downloads.get())
        return downloads->get(url, offset, std::move(receiver));
    return std::make_unique<BrokenExchange>(std::move(receiver));
}
