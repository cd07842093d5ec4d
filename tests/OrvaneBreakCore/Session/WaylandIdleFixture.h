// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "SettableClock.h"
#include "Support/FakeCompositor.h"
#include "WaylandUserIdle.h"

#include <QTest>

#include <wayland-client-core.h>

#include <functional>
#include <memory>

/// A compositor, a clock and the idle time of one client of that compositor. The waits dispatch the events of
/// both sides until a condition is true, and return false if it never is.
struct WaylandIdleFixture
{
    /// The idle time of a new client of the compositor.
    void start(std::chrono::milliseconds timeout = WaylandUserIdle::usualTimeout)
    {
        userIdle = std::make_unique<WaylandUserIdle>(
            clock, WaylandDisplayPointer(wl_display_connect_to_fd(compositor.connectClient())), timeout);
    }

    [[nodiscard]] bool settles(const std::function<bool()> &condition)
    {
        return QTest::qWaitFor([&] {
            compositor.pump();
            return condition();
        });
    }

    [[nodiscard]] bool hasNotifications(std::size_t count)
    {
        return settles([&] { return compositor.notifications().size() == count; });
    }

    [[nodiscard]] bool hasFigure(double expected)
    {
        return settles([&] { return figure() == expected; });
    }

    [[nodiscard]] double figure() const { return userIdle->secondsSinceLastInput().front(); }

    SettableClock clock;
    FakeCompositor compositor;
    std::unique_ptr<WaylandUserIdle> userIdle;
};
