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
/// reports input alone; where both protocols are offered it takes precedence. All figures are 0 while the
/// compositor offers no seat or none of the protocols, and always once it is gone. Asking never waits.
class WaylandUserIdle final : public UserIdle
{
public:
    /// The time-out that the program asks for.
    static constexpr std::chrono::seconds usualTimeout = std::chrono::minutes(1);

    /// Takes over a connection to the compositor, or nullptr for none. `runLoop` outlives this object. The
    /// reports of the compositor arrive through the event loop.
    WaylandUserIdle(const RunLoop &runLoop, WaylandDisplayPointer display,
                    std::chrono::milliseconds timeout = usualTimeout);
    ~WaylandUserIdle() override;

    /// Waits until the compositor has announced what it offers, for at most as long as `WaylandGlobals` does.
    /// Later announcements arrive through the event loop in any case.
    void waitForAnnouncements();

    /// Whether there is a connection to a compositor, also one that is lost.
    [[nodiscard]] bool hasCompositor() const { return m_connection.display() != nullptr; }

    /// The protocol that the figures come from, or nothing if none is offered.
    [[nodiscard]] std::optional<WaylandIdleProtocol> protocol() const;

    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override;

private:
    struct Watch
    {
        std::uint32_t seatName;
        std::uint32_t notifierName;
        NativePointer<wl_seat> seat;
        std::unique_ptr<WaylandIdleNotification> notification;
    };

    struct Notifier
    {
        WaylandIdleProtocol protocol;
        WaylandGlobal global;
    };

    void listenToRegistry();
    void globalAppeared(WaylandGlobal global, const char *interface);
    void globalVanished(std::uint32_t name);
    [[nodiscard]] const Notifier *bestNotifier() const;
    void startWatch();

    const RunLoop &m_runLoop;
    std::chrono::milliseconds m_timeout;
    WaylandConnection m_connection;
    NativePointer<wl_registry> m_registry;
    std::vector<WaylandGlobal> m_seats;
    std::vector<Notifier> m_notifiers;
    std::optional<Watch> m_watch;
    std::optional<Date> m_idleSince;
};
