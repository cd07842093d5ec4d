// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

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

/// The protocol whose global object has that interface, or nothing for other interfaces.
[[nodiscard]] std::optional<WaylandIdleProtocol> idleProtocolOf(std::string_view interface);

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
