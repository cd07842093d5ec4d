// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BreakOverlay.h"
#include "RunLoop.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

class Chime;
class Preferences;
class UserIdle;

/// Decides when breaks happen, runs their countdown and reports every change. Off after construction. All
/// dates are wall-clock dates. User-interface thread only.
class BreakEngine
{
public:
    /// What the engine uses. The references outlive the engine, which owns the overlay.
    struct Services
    {
        RunLoop &runLoop;
        Preferences &preferences;
        UserIdle &userIdle;
        Chime &chime;
        std::unique_ptr<BreakOverlay> overlay;
    };

    explicit BreakEngine(Services services);
    BreakEngine(const BreakEngine &) = delete;
    BreakEngine &operator=(const BreakEngine &) = delete;

    /// The engine of the process; aborts it if none is registered.
    [[nodiscard]] static BreakEngine &shared();

    /// Reminders are switched on.
    [[nodiscard]] bool isActive() const { return m_isActive; }

    /// A break is showing.
    [[nodiscard]] bool isOnBreak() const { return m_isOnBreak; }

    /// When the next break is due; absent while off and, unless `start()` was called meanwhile, during a
    /// break.
    [[nodiscard]] std::optional<Date> nextBreakDate() const { return m_nextBreakDate; }

    /// Called after every change of state and once a minute while a break is awaited, so that texts can be
    /// refreshed.
    std::function<void()> onChange;

    /// Switches reminders on; the next break is one interval away. Does nothing while they are on.
    void start();

    /// Switches reminders off and ends a running break. Calls `onChange` even when nothing was running.
    void stop();

    /// Begins a break at once, also while reminders are off, and leaves them as they are. Does nothing during
    /// a break.
    void breakNow();

    /// Ends a running break; while reminders are on, the next break comes `minutes` from now. With reminders
    /// off `onChange` is not called.
    void postpone(int minutes);

    /// Restarts the wait with the interval of the preferences, counted from now. Does nothing while off or on
    /// a break: a changed interval then counts from the end of the break.
    void rescheduleFromSettings();

    /// One line of French for the status label.
    [[nodiscard]] QString statusText() const;

private:
    void scheduleNext(int minutes);
    void cancelSchedule();
    void breakDue();
    void beginBreak();
    void ringTick();
    void endBreak();
    void closeOverlay();
    void notifyChange() const;
    [[nodiscard]] double idleSeconds() const;

    RunLoop &m_runLoop;
    Preferences &m_preferences;
    UserIdle &m_userIdle;
    Chime &m_chime;
    std::unique_ptr<BreakOverlay> m_overlay;

    std::optional<Date> m_breakEndDate;
    std::optional<Date> m_nextBreakDate;
    bool m_isActive = false;
    bool m_isOnBreak = false;

    // The timers come last, so that they are cancelled before anything that their actions use is destroyed.
    Timer m_nextTimer;
    Timer m_statusTick;
    Timer m_ringTimer;
    std::vector<Timer> m_replacedRingTimers;
};
