// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <chrono>
#include <functional>
#include <optional>

class QObject;
class QUrl;

/// A server's answer.
struct HttpAnswer
{
    int status = 0;
    QByteArray body;
};

/// Requests to the makers' server. User-interface thread only; never blocks.
class Http
{
public:
    /// The answer, whatever its status. Absent when there is none: no network, no free descriptors, an
    /// invalid certificate, a redirect to a forbidden address, a timeout, or more than a mebibyte.
    using Completion = std::function<void(const std::optional<HttpAnswer> &)>;

    /// Called when there is a connection, before the first byte of the request leaves; false cancels the
    /// request. Called again after a redirect.
    using Departure = std::function<bool()>;

    Http() = default;
    virtual ~Http() = default;
    Http(const Http &) = delete;
    Http &operator=(const Http &) = delete;

    /// Sends `body` to `url` by POST and calls `completion` exactly once, from the event loop. The whole
    /// exchange takes at most `limit`. Destroying `context` cancels it; `completion` is then not called.
    virtual void post(const QUrl &url, const QByteArray &body, std::chrono::milliseconds limit,
                      QObject &context, Completion completion, Departure departure = {}) = 0;

    /// As post(), by GET and without a body.
    virtual void get(const QUrl &url, std::chrono::milliseconds limit, QObject &context,
                     Completion completion) = 0;

    /// Whether the program may contact `url`: over HTTPS, or over HTTP on this machine.
    [[nodiscard]] static bool isAllowed(const QUrl &url);

protected:
    /// Calls `completion` without an answer, under the conditions of post().
    static void completeWithoutAnswer(QObject &context, Completion completion);
};
