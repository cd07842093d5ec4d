// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Downloads.h"

#include <chrono>

class QNetworkAccessManager;

/// Downloads with Qt Network. Certificates are always verified; cookies are neither stored nor sent.
class NetworkDownloads final : public Downloads
{
public:
    /// An exchange is Broken when the server sends nothing for `inactivityTimeout`.
    explicit NetworkDownloads(std::chrono::milliseconds inactivityTimeout = std::chrono::seconds(30));
    ~NetworkDownloads() override;

    [[nodiscard]] std::unique_ptr<Exchange> get(const QUrl &url, qint64 offset, Receiver receiver) override;

private:
    std::unique_ptr<QNetworkAccessManager> m_manager;
    std::chrono::milliseconds m_inactivityTimeout;
};
