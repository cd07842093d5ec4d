// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

/// A point on the wall clock. Time spent suspended and changes of the clock count.
using Date = std::chrono::sys_time<std::chrono::microseconds>;
using Interval = std::chrono::microseconds;

class TimerSchedule;

/// A scheduled call. Destroying or overwriting the handle cancels the call; a handle that outlives its run
/// loop is inert. A one-shot timer that has fired stays valid as a handle but no longer does anything.
class Timer
{
public:
    Timer() = default;
    Timer(std::weak_ptr<TimerSchedule> schedule, std::uint64_t identifier);
    ~Timer();
    Timer(Timer &&other) noexcept;
    Timer &operator=(Timer &&other) noexcept;
    Timer(const Timer &) = delete;
    Timer &operator=(const Timer &) = delete;

    /// Cancels the call; does nothing on an empty or already fired timer.
    void invalidate();

    /// True from scheduling until `invalidate()`, also after a one-shot timer has fired.
    explicit operator bool() const { return m_identifier != 0; }

private:
    std::weak_ptr<TimerSchedule> m_schedule;
    std::uint64_t m_identifier = 0;
};

/// The wall clock and the timers of the user-interface thread. Every member is called on that thread, and
/// every action runs on it, from its event loop (also while menus are open).
class RunLoop
{
public:
    RunLoop();
    virtual ~RunLoop();
    RunLoop(const RunLoop &) = delete;
    RunLoop &operator=(const RunLoop &) = delete;

    [[nodiscard]] virtual Date now() const = 0;

    /// Calls `action` once, not before `due` and, while the event loop is free, not later than `due +
    /// tolerance`. A date in the past is due at once. Setting the clock forward past `due` makes it due;
    /// setting it back prolongs the wait.
    [[nodiscard]] Timer scheduleOnce(Date due, Interval tolerance, std::function<void()> action);

    /// Calls `action` every `interval`, first one interval from now. The phase is kept: a late call does not
    /// move the ones after it, and calls missed meanwhile (a suspend, a busy thread) are replaced by a single
    /// one. After the clock is set back the next call comes at most one interval later.
    [[nodiscard]] Timer scheduleRepeating(Interval interval, Interval tolerance,
                                          std::function<void()> action);

protected:
    /// Called whenever the set of timers has changed and the next wake-up with it.
    virtual void scheduleChanged() = 0;

    [[nodiscard]] TimerSchedule &schedule() const { return *m_schedule; }

private:
    std::shared_ptr<TimerSchedule> m_schedule;
};
