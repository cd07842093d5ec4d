// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <functional>
#include <memory>

class QByteArray;
class QUrl;

/// Fetches files of any size, piece by piece. User-interface thread only; nothing waits.
class Downloads
{
public:
    /// How an exchange ended.
    enum class End
    {
        Complete,   ///< The server sent all that it announced.
        Broken,     ///< No network, a connection that ended early, silence, a server or a machine in trouble.
        OtherRange, ///< The server has no such offset, or sends from another one; nothing was delivered.
        Refused     ///< Any other status, too many redirects or one to somewhere unsafe, a forbidden address.
    };

    /// What is told of an exchange, from the event loop.
    struct Receiver
    {
        /// Once, before any data: where it starts, at the asked offset or, from a server that sends only
        /// whole files, at 0. Not called when there is no data because of a failure.
        std::function<void(qint64 offset)> onBegin;
        /// The next bytes, never none.
        std::function<void(const QByteArray &bytes)> onData;
        /// Once, and nothing after it.
        std::function<void(End end)> onEnd;
    };

    /// One exchange. Destroying it, also from within the receiver, ends it, and the receiver hears nothing
    /// more.
    class Exchange
    {
    public:
        Exchange() = default;
        virtual ~Exchange() = default;
        Exchange(const Exchange &) = delete;
        Exchange &operator=(const Exchange &) = delete;
    };

    Downloads() = default;
    virtual ~Downloads() = default;
    Downloads(const Downloads &) = delete;
    Downloads &operator=(const Downloads &) = delete;

    /// Asks for `url` from the byte `offset` on. The bytes are those of the file, never unpacked on the way.
    [[nodiscard]] virtual std::unique_ptr<Exchange> get(const QUrl &url, qint64 offset,
                                                        Receiver receiver) = 0;
};
