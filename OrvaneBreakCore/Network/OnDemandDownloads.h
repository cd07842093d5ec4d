// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Downloads.h"
#include "Module.h"
#include "NetworkModule.h"

#include <functional>
#include <memory>

/// The downloads through the module for the network, which the first of them loads. Without the module each
/// exchange is broken, and the next one tries again.
class OnDemandDownloads final : public Downloads
{
public:
    explicit OnDemandDownloads(std::function<const NetworkModule *()> load = &Module::load<NetworkModule>);

    [[nodiscard]] std::unique_ptr<Exchange> get(const QUrl &url, qint64 offset, Receiver receiver) override;

private:
    std::function<const NetworkModule *()> m_load;
    std::unique_ptr<Downloads> m_downloads;
};
