// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnDemandHttp.h"

#include <QUrl>

#include <utility>

using namespace Qt::StringLiterals;

OnDemandHttp::OnDemandHttp(std::function<const NetworkModule *()> load)
    : m_load(std::move(load))
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
                        QObject &context, Completion completion)
{
    if (Http *http = httpFor(url))
        http->post(url, body, limit, context, std::move(completion));
    else
        completeWithoutAnswer(context, std::move(completion));
}

Http *OnDemandHttp::httpFor(const QUrl &url)
{
    if (url.host().endsWith(".invalid"_L1))
        return nullptr;
    if (!m_http) {
        if (const NetworkModule *module = m_load())
            m_http = module->makeHttp();
    }
    return m_http.get();
}
