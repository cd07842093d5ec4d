// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"
#include "UserIdle.h"
#include "WaylandConnection.h"
#include "WaylandIdleNotification.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// The idle time in a Wayland session, of the first seat. The protocols tell only that nothing was touched
/// for a time-out, and when something is touched again, so that figures below the time-out read as 0. The
/// compositor also keeps silent, and the user counts as active, while a program such as a video player
/// inhibits idleness. All figures are 0 as well while there is no seat or the compositor has withdrawn the
/// protocol, and for good once the compositor is gone. Asking never waits.
class WaylandUserIdle final : public UserIdle
{
public:
    /// What the compositor is asked for in the program.
    static constexpr std::chrono::milliseconds usualTimeout = std::chrono::minutes(1);

    /// Takes over a connection to the compositor, or nullptr where there is none. `runLoop` outlives this
    /// object. Needs the event loop to hear from the compositor.
    WaylandUserIdle(const RunLoop &runLoop, WaylandDisplayPointer display, WaylandIdleProtocol protocol,
                    std::chrono::milliseconds timeout = usualTimeout);
    ~WaylandUserIdle() override;

    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override;

private:
    struct Global
    {
        std::uint32_t name;
        std::uint32_t version;
    };
    struct Watch
    {
        std::uint32_t seatName;
        std::uint32_t notifierName;
        NativePointer<wl_seat> seat;
        std::unique_ptr<WaylandIdleNotification> notification;
    };

    void listenToRegistry();
    void globalAppeared(Global global, const char *interface);
    void globalVanished(std::uint32_t name);
    void startWatch();

    const RunLoop &m_runLoop;
    WaylandIdleProtocol m_protocol;
    std::chrono::milliseconds m_timeout;
    WaylandConnection m_connection;
    NativePointer<wl_registry> m_registry;
    std::vector<Global> m_seats;
    std::vector<Global> m_notifiers;
    std::optional<Watch> m_watch;
    std::optional<Date> m_idleSince;
};
