// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QNetworkRequest>

#include <functional>

class QNetworkReply;
class QObject;
class QUrl;

/// What every exchange with a server has in common. User-interface thread.
namespace SafeRequest {

/// A request to `url` whose redirects wait to be judged, without cookies and without anything about the
/// desktop.
[[nodiscard]] QNetworkRequest to(const QUrl &url);

/// Follows the redirects of `reply`, which belongs to such a request, to addresses that Http::isAllowed. One
/// to another address calls `refuse`, as long as `context` lives.
void judgeRedirects(QNetworkReply &reply, QObject *context, std::function<void()> refuse);

} // namespace SafeRequest
