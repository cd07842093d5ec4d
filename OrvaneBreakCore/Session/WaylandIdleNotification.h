// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

struct wl_display;
struct wl_registry;
struct wl_seat;

/// The Wayland protocols that report when a seat becomes idle and when it is used again.
enum class WaylandIdleProtocol
{
    ExtIdleNotify, ///< ext-idle-notify-v1; from version 2 on, idle inhibitors are ignored.
    KdeIdle,       ///< org_kde_kwin_idle
};

/// A global object as the compositor announces it.
struct WaylandGlobal
{
    std::uint32_t name;
    std::uint32_t version;
};

/// Which of the protocols a compositor offers.
struct OfferedWaylandIdle
{
    bool extIdleNotify = false;
    bool kdeIdle = false;
};

/// Asks the compositor and waits for its answer, at most as long as `WaylandGlobals` does. Nothing is offered
/// on a broken connection or without an answer in time.
[[nodiscard]] OfferedWaylandIdle offeredWaylandIdle(wl_display &display);

/// The interface of the global object that a compositor announces for the protocol.
[[nodiscard]] const char *globalInterface(WaylandIdleProtocol protocol);

/// A request for reports about one seat. Destroying it withdraws the request.
class WaylandIdleNotification
{
public:
    /// Called while the connection's events are dispatched.
    struct Handlers
    {
        std::function<void()> idled;   ///< There was no input during the whole time-out.
        std::function<void()> resumed; ///< There is input again.
    };

    WaylandIdleNotification() = default;
    virtual ~WaylandIdleNotification() = default;
    WaylandIdleNotification(const WaylandIdleNotification &) = delete;
    WaylandIdleNotification &operator=(const WaylandIdleNotification &) = delete;
};

/// Requests reports about `seat` from `global`, an object of that protocol in `registry`. The request is sent
/// with the connection's next flush.
[[nodiscard]] std::unique_ptr<WaylandIdleNotification>
requestIdleNotification(WaylandIdleProtocol protocol, wl_registry &registry, WaylandGlobal global,
                        wl_seat &seat, std::chrono::milliseconds timeout,
                        WaylandIdleNotification::Handlers handlers);
