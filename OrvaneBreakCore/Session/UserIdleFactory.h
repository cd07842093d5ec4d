// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"
#include "UserIdle.h"

#include <memory>

/// Where the idle time comes from.
enum class UserIdleSource
{
    None,
    XScreenSaver,
    ExtIdleNotify,
    KdeIdle,
    MutterIdleMonitor,
};

/// What the desktop offers, as found out when the program starts.
struct DesktopIdleFacts
{
    bool isWaylandSession = false; ///< A compositor answers at WAYLAND_DISPLAY.
    bool offersExtIdleNotify = false;
    bool offersKdeIdle = false;
    bool ownsMutterIdleMonitor = false; ///< The service runs on the session bus.
    bool offersXScreenSaver = false;
};

/// The best source on such a desktop. In a Wayland session never the X server, which sees only the input to
/// its own windows.
[[nodiscard]] UserIdleSource chooseUserIdleSource(const DesktopIdleFacts &facts);

/// A short English name for diagnostics; "none" where there is no source.
[[nodiscard]] const char *userIdleSourceName(UserIdleSource source);

struct ChosenUserIdle
{
    std::unique_ptr<UserIdle> userIdle; ///< Never nullptr.
    UserIdleSource source;
};

/// Looks at the desktop once and returns its best source of the idle time. Waits for the compositor, the X
/// server and, for at most half a second, the session bus. `runLoop` outlives the result. User-interface
/// thread, with the application object in existence.
[[nodiscard]] ChosenUserIdle makeUserIdle(const RunLoop &runLoop);
