// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "MutterUserIdle.h"
#include "RunLoop.h"
#include "UserIdle.h"
#include "WaylandUserIdle.h"
#include "X11UserIdle.h"

#include <chrono>
#include <optional>

/// The sources of the idle time.
enum class UserIdleSource
{
    None,
    XScreenSaver,
    ExtIdleNotify,
    KdeIdle,
    MutterIdleMonitor,
    MuffinIdleMonitor,
};

/// What the desktop offers.
struct DesktopIdleFacts
{
    bool isWaylandSession = false; ///< A compositor accepted a connection at WAYLAND_DISPLAY.
    bool offersExtIdleNotify = false;
    bool offersKdeIdle = false;
    bool ownsMutterIdleMonitor = false; ///< The service runs on the session bus.
    bool ownsMuffinIdleMonitor = false; ///< Likewise.
    bool offersXScreenSaver = false;
};

/// The best source on such a desktop. In a Wayland session this is never the X server, which sees only the
/// input to its own windows.
[[nodiscard]] UserIdleSource chooseUserIdleSource(const DesktopIdleFacts &facts);

/// A short English name for diagnostics; "none" where there is no source.
[[nodiscard]] const char *userIdleSourceName(UserIdleSource source);

/// The idle time from the best source that the desktop offers at the moment of the question, so that a
/// compositor or service that was slow at login is used once it is there. All figures are 0 without a source.
class DesktopUserIdle final : public UserIdle
{
public:
    /// Connects to the compositor, or without one to the X server, and waits for a second at most for what it
    /// offers. `runLoop` outlives this object, `timeout` is that of the Wayland protocols. The application
    /// object exists.
    explicit DesktopUserIdle(const RunLoop &runLoop,
                             std::chrono::milliseconds timeout = WaylandUserIdle::usualTimeout);

    /// Asks the services on the session bus, for half a second each at most, if nothing else is offered.
    [[nodiscard]] UserIdleSource source() const;

    /// Waits for services as `source()` does, and half a second more for the figure.
    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override;

    /// Figures below this read as 0 at present.
    [[nodiscard]] std::chrono::milliseconds resolution() const;

private:
    WaylandUserIdle m_wayland;
    std::chrono::milliseconds m_timeout;
    std::optional<X11UserIdle> m_x11; ///< Absent in a Wayland session.
    MutterUserIdle m_mutter;
    MutterUserIdle m_muffin;
};
