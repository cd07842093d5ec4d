// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Downloads.h"
#include "Module.h"
#include "NetworkModule.h"
#include "OnDemand.h"

/// Downloads through the network module, which the first download loads. Without the module each exchange
/// ends as Broken.
class OnDemandDownloads final : public Downloads
{
public:
    explicit OnDemandDownloads(OnDemand<Downloads>::Make make = [] {
        return Module::make(&NetworkModule::makeDownloads);
    });

    [[nodiscard]] std::unique_ptr<Exchange> get(const QUrl &url, qint64 offset, Receiver receiver) override;

private:
    OnDemand<Downloads> m_downloads;
};
