// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

/// The kinds of input that count as presence.
enum class InputKind
{
    KeyDown,
    ModifierFlagsChanged,
    LeftMouseDown,
    RightMouseDown,
    OtherMouseDown,
    MouseMoved,
    ScrollWheel,
};

/// Seconds since the last input of each kind, in the order of `InputKind`.
using InputIdleSeconds = std::array<double, 7>;

/// How long ago the user last touched keyboard or mouse.
class UserIdle
{
public:
    UserIdle() = default;
    virtual ~UserIdle() = default;
    UserIdle(const UserIdle &) = delete;
    UserIdle &operator=(const UserIdle &) = delete;

    /// The figures at this moment. A desktop that has one figure for all input gives it for every kind; all
    /// are 0 when no figure can be had, because an unknown user counts as active. May ask the desktop and
    /// wait for at most half a second. User-interface thread.
    [[nodiscard]] virtual InputIdleSeconds secondsSinceLastInput() const = 0;
};

/// Where no desktop service tells the idle time: the user always counts as active.
class AbsentUserIdle final : public UserIdle
{
public:
    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override { return {}; }
};
