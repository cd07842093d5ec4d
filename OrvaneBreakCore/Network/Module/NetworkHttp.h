// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Http.h"

#include <memory>

class QNetworkAccessManager;

/// The requests through the toolkit's network access. Certificates are checked, and nothing switches that
/// off; cookies are neither kept nor sent.
class NetworkHttp final : public Http
{
public:
    NetworkHttp();
    ~NetworkHttp() override;

    void get(const QUrl &url, std::chrono::milliseconds limit, QObject &context,
             Completion completion) override;
    void post(const QUrl &url, const QByteArray &body, std::chrono::milliseconds limit, QObject &context,
              Completion completion) override;

private:
    template <typename Send>
    void exchange(const QUrl &url, std::chrono::milliseconds limit, QObject &context, Completion completion,
                  Send send);

    std::unique_ptr<QNetworkAccessManager> m_manager;
};
