// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QNetworkRequest>

#include <functional>

class QNetworkReply;
class QObject;
class QUrl;

/// What all exchanges with a server share. User-interface thread only.
namespace SafeRequest {

/// A request to `url` without cookies and without information about the desktop. Its redirects need
/// checkRedirects().
[[nodiscard]] QNetworkRequest to(const QUrl &url);

/// Follows the redirects of `reply`, the reply to such a request, if Http::isAllowed() accepts the target;
/// otherwise calls `refuse`. Stops when `context` is destroyed.
void checkRedirects(QNetworkReply &reply, QObject *context, std::function<void()> refuse);

} // namespace SafeRequest
