// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "NativePointers.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>

/// A connection to a compositor next to the toolkit's own. The event loop of the user-interface thread
/// dispatches its events. There are none any more once the compositor is gone.
class WaylandConnection
{
public:
    /// Takes over a connection, or nullptr for none. `lost` is called once, from the event loop, when the
    /// compositor ends or closes the connection.
    WaylandConnection(WaylandDisplayPointer display, std::function<void()> lost);
    WaylandConnection(const WaylandConnection &) = delete;
    WaylandConnection &operator=(const WaylandConnection &) = delete;

    /// Stays valid after the connection is lost. nullptr if there never was one.
    [[nodiscard]] wl_display *display() const { return m_display.get(); }

    /// Sends the requests that were made outside of an event handler. Never waits.
    void flush();

private:
    void readEvents();
    void lose();

    WaylandDisplayPointer m_display;
    std::function<void()> m_lost;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
