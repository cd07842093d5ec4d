// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BreakOverlay.h"

#include <functional>
#include <memory>
#include <optional>

/// A break screen that stays away from the lock screen. Nothing is shown while the session is locked. A lock
/// during a break hides it at the next update, and the next update after the unlock shows it again.
class LockAwareOverlay final : public BreakOverlay
{
public:
    /// `isLocked` is asked at every `show` and every fifth `update`: twice a second, because it may have to
    /// ask the display server.
    LockAwareOverlay(std::unique_ptr<BreakOverlay> overlay, std::function<bool()> isLocked);

    void show(int pauseSeconds) override;
    void update(double secondsLeft, double fraction) override;
    void hide() override;

private:
    void followLock(int pauseSeconds);

    std::unique_ptr<BreakOverlay> m_overlay;
    std::function<bool()> m_isLocked;
    std::optional<int> m_pauseSeconds; ///< Of the break that is on.
    bool m_isShown = false;
    int m_updates = 0; ///< Since the last question.
};
