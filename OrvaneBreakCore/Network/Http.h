// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <chrono>
#include <functional>
#include <optional>

class QObject;
class QUrl;

/// What a server answered.
struct HttpAnswer
{
    int status = 0;
    QByteArray body;
};

/// Requests to the makers' server. User-interface thread only; nothing waits.
class Http
{
public:
    /// The answer whatever its status, or nothing when none came: no network, no descriptors, an invalid
    /// certificate, a redirect to somewhere unsafe, an answer that took too long or is larger than a
    /// mebibyte.
    using Completion = std::function<void(const std::optional<HttpAnswer> &)>;

    Http() = default;
    virtual ~Http() = default;
    Http(const Http &) = delete;
    Http &operator=(const Http &) = delete;

    /// Sends `body` to `url` by POST and calls `completion` exactly once, from the event loop, after `limit`
    /// at the latest: the limit is for the whole exchange. Destroying `context` abandons the exchange, and
    /// `completion` is not called then.
    virtual void post(const QUrl &url, const QByteArray &body, std::chrono::milliseconds limit,
                      QObject &context, Completion completion) = 0;

    /// As post(), but asks for `url` by GET.
    virtual void get(const QUrl &url, std::chrono::milliseconds limit, QObject &context,
                     Completion completion) = 0;

    /// Whether the program talks to `url` at all: over HTTPS, or over HTTP with this machine alone.
    [[nodiscard]] static bool isAllowed(const QUrl &url);

protected:
    /// Calls `completion` with nothing, as post() does when no answer comes.
    static void completeWithoutAnswer(QObject &context, Completion completion);
};
