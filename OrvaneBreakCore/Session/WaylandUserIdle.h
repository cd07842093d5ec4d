// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "NativePointers.h"
#include "RunLoop.h"
#include "UserIdle.h"
#include "WaylandConnection.h"
#include "WaylandIdleNotification.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// The idle time of the first seat of a Wayland session. The protocols report only that there was no input
/// for a time-out, and the next input, so figures below the time-out read as 0. While a program such as a
/// video player inhibits idleness, the user counts as active, except with version 2 of ext-idle-notify-v1,
/// which reports input alone. All figures are 0 while there is no seat or the compositor has withdrawn the
/// protocol, and always once the compositor is gone. Asking never waits.
class WaylandUserIdle final : public UserIdle
{
public:
    /// The time-out that the program asks for.
    static constexpr std::chrono::seconds usualTimeout = std::chrono::minutes(1);

    /// Takes over a connection to the compositor, or nullptr for none. `runLoop` outlives this object. The
    /// reports of the compositor arrive through the event loop.
    WaylandUserIdle(const RunLoop &runLoop, WaylandDisplayPointer display, WaylandIdleProtocol protocol,
                    std::chrono::milliseconds timeout = usualTimeout);
    ~WaylandUserIdle() override;

    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override;

private:
    struct Watch
    {
        std::uint32_t seatName;
        std::uint32_t notifierName;
        NativePointer<wl_seat> seat;
        std::unique_ptr<WaylandIdleNotification> notification;
    };

    void listenToRegistry();
    void globalAppeared(WaylandGlobal global, const char *interface);
    void globalVanished(std::uint32_t name);
    void startWatch();

    const RunLoop &m_runLoop;
    WaylandIdleProtocol m_protocol;
    std::chrono::milliseconds m_timeout;
    WaylandConnection m_connection;
    NativePointer<wl_registry> m_registry;
    std::vector<WaylandGlobal> m_seats;
    std::vector<WaylandGlobal> m_notifiers;
    std::optional<Watch> m_watch;
    std::optional<Date> m_idleSince;
};
