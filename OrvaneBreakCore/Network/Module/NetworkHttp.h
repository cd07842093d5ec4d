// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Http.h"
#include "Transfer.h"
#include "TransferLoop.h"

/// The requests through libcurl.
class NetworkHttp final : public Http
{
public:
    void get(const QUrl &url, std::chrono::milliseconds limit, QObject &context,
             Completion completion) override;
    void post(const QUrl &url, const QByteArray &body, std::chrono::milliseconds limit, QObject &context,
              Completion completion, Departure departure = {}) override;

private:
    void exchange(Transfer::Request request, std::chrono::milliseconds limit, QObject &context,
                  Completion completion);

    TransferLoop m_loop;
    QObject m_exchanges;
};
