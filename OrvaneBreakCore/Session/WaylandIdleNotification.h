// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

struct wl_display;
struct wl_registry;
struct wl_seat;

/// The Wayland protocols that tell when a seat becomes idle and when it is used again.
enum class WaylandIdleProtocol
{
    ExtIdleNotify, ///< ext-idle-notify-v1
    KdeIdle,       ///< org_kde_kwin_idle
};

/// Which of the protocols a compositor has.
struct OfferedWaylandIdle
{
    bool extIdleNotify = false;
    bool kdeIdle = false;
};

/// Asks the compositor and waits for its answer, at most as long as `WaylandGlobals` does; nothing is offered
/// on a broken connection or without an answer in time.
[[nodiscard]] OfferedWaylandIdle offeredWaylandIdle(wl_display &display);

/// The name of the global object that a compositor announces the protocol with.
[[nodiscard]] const char *globalInterface(WaylandIdleProtocol protocol);

/// One request to be told about a seat; destroying it withdraws the request.
class WaylandIdleNotification
{
public:
    /// Called from the handling of the connection's events.
    struct Handlers
    {
        std::function<void()> idled; ///< Nothing has been touched for the whole time-out.
        std::function<void()> resumed;
    };

    WaylandIdleNotification() = default;
    virtual ~WaylandIdleNotification() = default;
    WaylandIdleNotification(const WaylandIdleNotification &) = delete;
    WaylandIdleNotification &operator=(const WaylandIdleNotification &) = delete;
};

/// Requests a notification of `seat` from the global object called `globalName` in `registry`. The request is
/// sent with the connection's next flush.
[[nodiscard]] std::unique_ptr<WaylandIdleNotification>
requestIdleNotification(WaylandIdleProtocol protocol, wl_registry &registry, std::uint32_t globalName,
                        wl_seat &seat, std::chrono::milliseconds timeout,
                        WaylandIdleNotification::Handlers handlers);
