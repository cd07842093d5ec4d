// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <functional>
#include <memory>

class QByteArray;
class QUrl;

/// Downloads files of any size piece by piece. User-interface thread only; never blocks.
class Downloads
{
public:
    /// How an exchange ended.
    enum class End
    {
        Complete,   ///< The server sent everything that it announced.
        Broken,     ///< No network, a lost connection, a timeout, a server error, no free descriptors.
        OtherRange, ///< The server has no such offset, or sends from another one; nothing was delivered.
        Refused     ///< Any other status, a forbidden address, too many redirects or one to such an address.
    };

    /// The callbacks of an exchange, called from the event loop.
    struct Receiver
    {
        /// Once, before any data: its offset in the file, which is the requested one or, from a server that
        /// only sends whole files, 0. Not called when a failure leaves no data.
        std::function<void(qint64 offset)> onBegin;
        /// The next bytes; never empty.
        std::function<void(const QByteArray &bytes)> onData;
        /// Once, as the last call.
        std::function<void(End end)> onEnd;
    };

    /// One exchange. Destroying it, also from within a callback, ends it without further callbacks.
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

    /// Requests `url` from the byte `offset` on. The bytes are those of the file, never decompressed.
    [[nodiscard]] virtual std::unique_ptr<Exchange> get(const QUrl &url, qint64 offset,
                                                        Receiver receiver) = 0;
};
