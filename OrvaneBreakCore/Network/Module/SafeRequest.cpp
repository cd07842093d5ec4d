// SPDX-License-Identifier: GPL-3.0-or-later
#include "SafeRequest.h"

#include "Http.h"

#include <QNetworkReply>
#include <QUrl>

#include <utility>

namespace {

constexpr int mostRedirects = 5;

} // namespace

QNetworkRequest SafeRequest::to(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::UserVerifiedRedirectPolicy);
    request.setMaximumRedirectsAllowed(mostRedirects);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    // Left alone, the toolkit tells the language and country of the desktop; the program speaks French
    // anywhere.
    request.setRawHeader("Accept-Language", "fr");
    return request;
}

void SafeRequest::judgeRedirects(QNetworkReply &reply, QObject *context, std::function<void()> refuse)
{
    QObject::connect(&reply, &QNetworkReply::redirected, context,
                     [&reply, refuse = std::move(refuse)](const QUrl &target) {
                         if (Http::isAllowed(target))
                             Q_EMIT reply.redirectAllowed();
                         else
                             refuse();
                     });
}
