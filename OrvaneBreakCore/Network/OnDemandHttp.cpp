// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnDemandHttp.h"

#include <QUrl>

#include <utility>

using namespace Qt::StringLiterals;

OnDemandHttp::OnDemandHttp(OnDemand<Http>::Make make)
    : m_http(std::move(make))
{
}

void OnDemandHttp::get(const QUrl &url, std::chrono::milliseconds limit, QObject &context,
                       Completion completion)
{
    if (Http *http = httpFor(url))
        http->get(url, limit, context, std::move(completion));
    else
        completeWithoutAnswer(context, std::move(completion));
}

void OnDemandHttp::post(const QUrl &url, const QByteArray &body, std::chrono::milliseconds limit,
                        QObject &context, Completion completion, Departure departure)
{
    if (Http *http = httpFor(url))
        http->post(url, body, limit, context, std::move(completion), std::move(departure));
    else
        completeWithoutAnswer(context, std::move(completion));
}

Http *OnDemandHttp::httpFor(const QUrl &url)
{
    return url.host().endsWith(".invalid"_L1) ? nullptr : m_http.get();
}
