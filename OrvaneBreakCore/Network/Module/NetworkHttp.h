// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Http.h"

#include <memory>

class QNetworkAccessManager;

/// Requests with Qt Network. Certificates are always verified; cookies are neither stored nor sent.
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
