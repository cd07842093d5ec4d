// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Downloads.h"

#include <chrono>

class QNetworkAccessManager;

/// The downloads through the toolkit's network access. Certificates are checked, and nothing switches that
/// off; cookies are neither kept nor sent.
class NetworkDownloads final : public Downloads
{
public:
    /// A server that says nothing for as long as `silence` breaks the exchange.
    explicit NetworkDownloads(std::chrono::milliseconds silence = std::chrono::seconds(30));
    ~NetworkDownloads() override;

    [[nodiscard]] std::unique_ptr<Exchange> get(const QUrl &url, qint64 offset, Receiver receiver) override;

private:
    std::unique_ptr<QNetworkAccessManager> m_manager;
    std::chrono::milliseconds m_silence;
};
