// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Http.h"
#include "Module.h"
#include "NetworkModule.h"
#include "OnDemand.h"

/// Requests through the network module, which the first request loads. Without the module there is no answer.
class OnDemandHttp final : public Http
{
public:
    explicit OnDemandHttp(OnDemand<Http>::Make make = [] { return Module::make(&NetworkModule::makeHttp); });

    /// A host name below "invalid" never exists: such a request gets no answer and does not load the module.
    void get(const QUrl &url, std::chrono::milliseconds limit, QObject &context,
             Completion completion) override;
    /// As get().
    void post(const QUrl &url, const QByteArray &body, std::chrono::milliseconds limit, QObject &context,
              Completion completion, Departure departure = {}) override;

private:
    /// What sends a request to `url`; null when there will be no answer.
    [[nodiscard]] Http *httpFor(const QUrl &url);

    OnDemand<Http> m_http;
};
