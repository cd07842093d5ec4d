// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"
#include "UserIdle.h"

#include <chrono>
#include <memory>

/// The sources of the idle time.
enum class UserIdleSource
{
    None,
    XScreenSaver,
    ExtIdleNotify,
    KdeIdle,
    MutterIdleMonitor,
};

/// What the desktop offers when the program starts.
struct DesktopIdleFacts
{
    bool isWaylandSession = false; ///< A compositor answers at WAYLAND_DISPLAY.
    bool offersExtIdleNotify = false;
    bool offersKdeIdle = false;
    bool ownsMutterIdleMonitor = false; ///< The service runs on the session bus.
    bool offersXScreenSaver = false;
};

/// The best source on such a desktop. In a Wayland session this is never the X server, which sees only the
/// input to its own windows.
[[nodiscard]] UserIdleSource chooseUserIdleSource(const DesktopIdleFacts &facts);

/// A short English name for diagnostics; "none" where there is no source.
[[nodiscard]] const char *userIdleSourceName(UserIdleSource source);

struct ChosenUserIdle
{
    std::unique_ptr<UserIdle> userIdle; ///< Never nullptr.
    UserIdleSource source;

    /// Figures below this read as 0.
    [[nodiscard]] std::chrono::seconds resolution() const;
};

/// Looks at the desktop once and returns its best source of the idle time. Waits for the compositor, the X
/// server and, for half a second at most, the session bus. `runLoop` outlives the result. User-interface
/// thread; the application object exists.
[[nodiscard]] ChosenUserIdle makeUserIdle(const RunLoop &runLoop);
