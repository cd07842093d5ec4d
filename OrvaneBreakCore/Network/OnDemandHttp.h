// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Http.h"
#include "Module.h"
#include "NetworkModule.h"

#include <functional>
#include <memory>

/// The requests through the module for the network, which the first request to anybody loads. Without the
/// module there is no answer, and the next request tries again.
class OnDemandHttp final : public Http
{
public:
    explicit OnDemandHttp(std::function<const NetworkModule *()> load = &Module::load<NetworkModule>);

    /// A name below "invalid" belongs to nobody, ever: it is not looked up, and loads nothing.
    void get(const QUrl &url, std::chrono::milliseconds limit, QObject &context,
             Completion completion) override;
    /// As get().
    void post(const QUrl &url, const QByteArray &body, std::chrono::milliseconds limit, QObject &context,
              Completion completion) override;

private:
    /// Who asks `url`; null for nobody.
    [[nodiscard]] Http *httpFor(const QUrl &url);

    std::function<const NetworkModule *()> m_load;
    std::unique_ptr<Http> m_http;
};
