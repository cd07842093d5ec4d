// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Downloads.h"
#include "TransferLoop.h"

#include <chrono>

/// The downloads through libcurl.
class NetworkDownloads final : public Downloads
{
public:
    /// An exchange without new data for `inactivityTimeout` is broken.
    explicit NetworkDownloads(std::chrono::milliseconds inactivityTimeout = std::chrono::seconds(30));

    [[nodiscard]] std::unique_ptr<Exchange> get(const QUrl &url, qint64 offset, Receiver receiver) override;

private:
    TransferLoop m_loop;
    std::chrono::milliseconds m_inactivityTimeout;
};
