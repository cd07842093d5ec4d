// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

/// Seconds since the last input of each kind: key, modifier key, left, right and other mouse button, mouse
/// movement, scroll wheel.
using InputIdleSeconds = std::array<double, 7>;

/// Tells how long ago the user last used keyboard or mouse.
class UserIdle
{
public:
    UserIdle() = default;
    virtual ~UserIdle() = default;
    UserIdle(const UserIdle &) = delete;
    UserIdle &operator=(const UserIdle &) = delete;

    /// The figures at this moment. A desktop that has one figure for all input gives it for every kind. All
    /// are 0 if the idle time is unknown, so that the user counts as active. May query the desktop and block
    /// for at most two seconds. User-interface thread.
    [[nodiscard]] virtual InputIdleSeconds secondsSinceLastInput() const = 0;
};
