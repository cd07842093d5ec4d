// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"

#include <optional>
#include <string>
#include <tuple>
#include <vector>

/// An observable effect of an engine: a call on the overlay or the chime, or the change callback.
struct Effect
{
    enum class Kind
    {
        Show,
        Update,
        Hide,
        Play,
        Change
    };
    Kind kind = Kind::Change;
    double first = 0;
    double second = 0;
    bool operator==(const Effect &) const = default;
};

/// A timer as an observer sees it.
struct ObservedTimer
{
    Date due;
    Interval interval;
    Interval tolerance;
    bool operator==(const ObservedTimer &) const = default;
    bool operator<(const ObservedTimer &other) const
    {
        return std::tie(due, interval, tolerance) < std::tie(other.due, other.interval, other.tolerance);
    }
};

/// A model of the engine: a transition table that shares no code with it.
class EngineModel
{
public:
    enum class State
    {
        Off,
        Waiting,
        Break,
        BreakActive,
        BreakActiveScheduled
    };
    enum class Event
    {
        Start,
        Stop,
        BreakNow,
        Postpone,
        Reschedule,
        DueAway,
        DuePresent,
        Skip,
        Over
    };

    /// The engine's inputs, which the test changes.
    int intervalMinutes = 20;
    int pauseSeconds = 20;
    bool soundEnabled = false;
    double idleSeconds = 0;
    Date now{};

    std::vector<Effect> effects;

    EngineModel();

    void apply(Event event, int minutes = 0);
    void advance(Interval interval);
    void jump(Interval interval);

    /// The next wake-up, which is shared with the timers in `others`.
    [[nodiscard]] std::optional<Date> nextWakeUp(const std::vector<ObservedTimer> &others = {}) const;

    /// Moves the clock forward to `wakeUp` and fires the timers that are due.
    void wake(Date wakeUp);

    [[nodiscard]] State state() const { return m_state; }
    [[nodiscard]] bool isActive() const;
    [[nodiscard]] bool isOnBreak() const;
    [[nodiscard]] std::optional<Date> nextBreakDate() const { return m_nextDue; }

    /// How often each row of the table was used, in table order.
    [[nodiscard]] const std::vector<int> &transitionCounts() const { return m_transitionCounts; }

    /// "state, event" of a row of the table.
    [[nodiscard]] static std::string transitionName(std::size_t row);

    /// All timers, sorted.
    [[nodiscard]] std::vector<ObservedTimer> timers() const;

private:
    enum class TimerKind
    {
        Next,
        Tick,
        Ring
    };

    struct ModelTimer
    {
        TimerKind kind = TimerKind::Next;
        Date due;
        int serial = 0;
    };

    void fireOverdue();
    void fire(int serial);
    void ringTick();
    void scheduleNext(int minutes);
    void add(TimerKind kind, Date due);
    void remove(TimerKind kind);
    [[nodiscard]] bool has(TimerKind kind) const;

    State m_state = State::Off;
    std::optional<Date> m_nextDue;
    std::optional<Date> m_breakEnd;
    std::vector<ModelTimer> m_timers;
    std::vector<int> m_transitionCounts;
    int m_lastSerial = 0;
};
