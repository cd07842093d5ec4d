// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "NativePointers.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>

/// A connection to a compositor next to the toolkit's own, whose events are handled from the event loop of
/// the user-interface thread. Once the compositor is gone the connection stays silent for good.
class WaylandConnection
{
public:
    /// Takes over a connection, or nullptr where there is none. `lost` is called once, from the event loop,
    /// when the compositor goes away or ends the connection.
    WaylandConnection(WaylandDisplayPointer display, std::function<void()> lost);
    WaylandConnection(const WaylandConnection &) = delete;
    WaylandConnection &operator=(const WaylandConnection &) = delete;

    /// Stays valid after the connection is lost; nullptr when there never was one.
    [[nodiscard]] wl_display *display() const { return m_display.get(); }

    /// Sends what has been requested outside of the handling of an event. Never waits.
    void flush();

private:
    void readEvents();
    void lose();

    WaylandDisplayPointer m_display;
    std::function<void()> m_lost;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
