// SPDX-License-Identifier: GPL-3.0-or-later
#include "SafeRequest.h"

#include "Http.h"

#include <QNetworkReply>
#include <QUrl>

#include <utility>

namespace {

constexpr int maxRedirects = 5;

} // namespace

QNetworkRequest SafeRequest::to(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::UserVerifiedRedirectPolicy);
    request.setMaximumRedirectsAllowed(maxRedirects);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    // Qt's default would reveal the language and country of the desktop.
    request.setRawHeader("Accept-Language", "fr");
    return request;
}

void SafeRequest::checkRedirects(QNetworkReply &reply, QObject *context, std::function<void()> refuse)
{
    QObject::connect(&reply, &QNetworkReply::redirected, context,
                     [&reply, refuse = std::move(refuse)](const QUrl &target) {
                         if (Http::isAllowed(target))
                             Q_EMIT reply.redirectAllowed();
                         else
                             refuse();
                     });
}
