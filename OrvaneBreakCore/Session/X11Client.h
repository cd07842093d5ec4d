// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "NativePointers.h"

#include <xcb/xcb.h>

#include <chrono>

/// A connection to an X server next to the toolkit's own, whose replies have a time limit. It selects no
/// events, so nothing that happens on the display wakes the program. One thread at a time.
class X11Client
{
public:
    using Deadline = std::chrono::steady_clock::time_point;

    /// Takes over a connection as the X library returned it, also one in error, or nullptr for none.
    explicit X11Client(XcbConnectionPointer connection);

    /// A new connection to the display that DISPLAY names. A display that cannot be reached gives a client in
    /// error.
    [[nodiscard]] static X11Client toDisplay();

    /// False when the server was never reached or the connection is lost; requests then do nothing.
    [[nodiscard]] bool isConnected() const;

    [[nodiscard]] xcb_connection_t *connection() const { return m_connection.get(); }

    /// The first screen, or nullptr without a connection.
    [[nodiscard]] const xcb_screen_t *screen() const;

    /// The deadline of a request that is sent now: half a second from now.
    [[nodiscard]] static Deadline usualDeadline();

    /// The reply to the request of that sequence number; nullptr after an error, on a lost connection and
    /// after the deadline.
    template <typename Reply>
    [[nodiscard]] XcbReply<Reply> reply(unsigned sequence, Deadline deadline) const
    {
        return XcbReply<Reply>(static_cast<Reply *>(waitForReply(sequence, deadline)));
    }

private:
    [[nodiscard]] void *waitForReply(unsigned sequence, Deadline deadline) const;

    XcbConnectionPointer m_connection;
};
