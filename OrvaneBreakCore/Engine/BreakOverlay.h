// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

/// The break screen as the engine uses it. User-interface thread only.
class BreakOverlay
{
public:
    BreakOverlay() = default;
    virtual ~BreakOverlay() = default;
    BreakOverlay(const BreakOverlay &) = delete;
    BreakOverlay &operator=(const BreakOverlay &) = delete;

    /// Covers every screen and shows `pauseSeconds` until the first update. A second call replaces what the
    /// first showed.
    virtual void show(int pauseSeconds) = 0;

    /// `secondsLeft` may carry a fractional part and is shown rounded up, at least 0; `fraction` is the
    /// remaining part of the break, 1 at its start. Does nothing while hidden.
    virtual void update(double secondsLeft, double fraction) = 0;

    /// Uncovers every screen; does nothing while hidden.
    virtual void hide() = 0;

    /// Called when the user asks to skip the break; stays set across breaks.
    std::function<void()> onSkip;
};
