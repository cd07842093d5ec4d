// SPDX-License-Identifier: GPL-3.0-or-later
#include "EngineModel.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <tuple>

using namespace std::chrono_literals;

namespace {

using State = EngineModel::State;
using Event = EngineModel::Event;

enum class Schedule
{
    Keep,
    Cancel,
    Interval,
    Minutes
};
enum class Overlay
{
    Keep,
    Open,
    Close
};

struct Transition
{
    State from;
    Event event;
    State to;
    Overlay overlay;
    Schedule schedule;
    bool callback;
};

using enum EngineModel::State;
using enum EngineModel::Event;

constexpr Transition transitions[] = {
    {Off, Start, Waiting, Overlay::Keep, Schedule::Interval, true},
    {Off, Stop, Off, Overlay::Keep, Schedule::Cancel, true},
    {Off, BreakNow, Break, Overlay::Open, Schedule::Cancel, true},
    {Off, Postpone, Off, Overlay::Keep, Schedule::Keep, false},
    {Off, Reschedule, Off, Overlay::Keep, Schedule::Keep, false},
    {Off, Skip, Off, Overlay::Close, Schedule::Keep, true},

    {Waiting, Start, Waiting, Overlay::Keep, Schedule::Keep, false},
    {Waiting, Stop, Off, Overlay::Keep, Schedule::Cancel, true},
    {Waiting, BreakNow, BreakActive, Overlay::Open, Schedule::Cancel, true},
    {Waiting, Postpone, Waiting, Overlay::Keep, Schedule::Minutes, true},
    {Waiting, Reschedule, Waiting, Overlay::Keep, Schedule::Interval, true},
    {Waiting, DueAway, Waiting, Overlay::Keep, Schedule::Interval, true},
    {Waiting, DuePresent, BreakActive, Overlay::Open, Schedule::Cancel, true},
    {Waiting, Skip, Waiting, Overlay::Close, Schedule::Interval, true},

    {Break, Start, BreakActiveScheduled, Overlay::Keep, Schedule::Interval, true},
    {Break, Stop, Off, Overlay::Close, Schedule::Cancel, true},
    {Break, BreakNow, Break, Overlay::Keep, Schedule::Keep, false},
    {Break, Postpone, Off, Overlay::Close, Schedule::Keep, false},
    {Break, Reschedule, Break, Overlay::Keep, Schedule::Keep, false},
    {Break, Skip, Off, Overlay::Close, Schedule::Keep, true},
    {Break, Over, Off, Overlay::Close, Schedule::Keep, true},

    {BreakActive, Start, BreakActive, Overlay::Keep, Schedule::Keep, false},
    {BreakActive, Stop, Off, Overlay::Close, Schedule::Cancel, true},
    {BreakActive, BreakNow, BreakActive, Overlay::Keep, Schedule::Keep, false},
    {BreakActive, Postpone, Waiting, Overlay::Close, Schedule::Minutes, true},
    {BreakActive, Reschedule, BreakActive, Overlay::Keep, Schedule::Keep, false},
    {BreakActive, Skip, Waiting, Overlay::Close, Schedule::Interval, true},
    {BreakActive, Over, Waiting, Overlay::Close, Schedule::Interval, true},

    {BreakActiveScheduled, Start, BreakActiveScheduled, Overlay::Keep, Schedule::Keep, false},
    {BreakActiveScheduled, Stop, Off, Overlay::Close, Schedule::Cancel, true},
    {BreakActiveScheduled, BreakNow, BreakActiveScheduled, Overlay::Keep, Schedule::Keep, false},
    {BreakActiveScheduled, Postpone, Waiting, Overlay::Close, Schedule::Minutes, true},
    {BreakActiveScheduled, Reschedule, BreakActiveScheduled, Overlay::Keep, Schedule::Keep, false},
    {BreakActiveScheduled, DueAway, BreakActiveScheduled, Overlay::Keep, Schedule::Interval, true},
    {BreakActiveScheduled, DuePresent, BreakActive, Overlay::Open, Schedule::Cancel, true},
    {BreakActiveScheduled, Skip, Waiting, Overlay::Close, Schedule::Interval, true},
    {BreakActiveScheduled, Over, Waiting, Overlay::Close, Schedule::Interval, true},
};

std::size_t rowFor(State state, Event event)
{
    const auto row =
        std::find_if(std::begin(transitions), std::end(transitions), [&](const Transition &candidate) {
            return candidate.from == state && candidate.event == event;
        });
    if (row == std::end(transitions))
        std::abort(); // an event that cannot happen in this state
    return static_cast<std::size_t>(row - std::begin(transitions));
}

} // namespace

EngineModel::EngineModel()
    : m_transitionCounts(std::size(transitions))
{
}

std::string EngineModel::transitionName(std::size_t row)
{
    static constexpr const char *states[] = {"Off", "Waiting", "Break", "BreakActive",
                                             "BreakActiveScheduled"};
    static constexpr const char *events[] = {"Start",   "Stop",       "BreakNow", "Postpone", "Reschedule",
                                             "DueAway", "DuePresent", "Skip",     "Over"};
    return std::string(states[static_cast<int>(transitions[row].from)]) + ", " +
           events[static_cast<int>(transitions[row].event)];
}

void EngineModel::apply(Event event, int minutes)
{
    const std::size_t row = rowFor(m_state, event);
    const Transition &transition = transitions[row];
    ++m_transitionCounts[row];
    m_state = transition.to;

    if (transition.overlay == Overlay::Close) {
        remove(TimerKind::Ring);
        m_breakEnd.reset();
        effects.push_back({Effect::Kind::Hide});
    }
    switch (transition.schedule) {
    case Schedule::Keep:
        break;
    case Schedule::Cancel:
        m_nextDue.reset();
        remove(TimerKind::Next);
        remove(TimerKind::Tick);
        break;
    case Schedule::Interval:
        scheduleNext(intervalMinutes);
        break;
    case Schedule::Minutes:
        scheduleNext(minutes);
        break;
    }
    if (transition.overlay == Overlay::Open) {
        m_breakEnd = now + std::chrono::seconds(pauseSeconds);
        effects.push_back({Effect::Kind::Show, static_cast<double>(pauseSeconds)});
        if (soundEnabled)
            effects.push_back({Effect::Kind::Play});
        add(TimerKind::Ring, now + 100ms);
    }
    if (transition.callback)
        effects.push_back({Effect::Kind::Change});
}

bool EngineModel::isActive() const
{
    return m_state != State::Off && m_state != State::Break;
}

bool EngineModel::isOnBreak() const
{
    return m_state != State::Off && m_state != State::Waiting;
}

void EngineModel::scheduleNext(int minutes)
{
    m_nextDue = now + std::chrono::seconds(60) * minutes;
    remove(TimerKind::Next);
    add(TimerKind::Next, *m_nextDue);
    if (!has(TimerKind::Tick))
        add(TimerKind::Tick, now + 60s);
}

void EngineModel::advance(Interval interval)
{
    const Date end = now + interval;
    for (auto wakeUp = nextWakeUp(); wakeUp && *wakeUp <= end; wakeUp = nextWakeUp())
        wake(*wakeUp);
    now = end;
}

std::optional<Date> EngineModel::nextWakeUp(const std::vector<ObservedTimer> &others) const
{
    std::vector<ObservedTimer> all = timers();
    all.insert(all.end(), others.begin(), others.end());
    // The latest due date within every timer's tolerance.
    std::optional<Date> wakeUp;
    for (const ObservedTimer &candidate : all) {
        const bool isTolerated = std::all_of(all.begin(), all.end(), [&](const ObservedTimer &timer) {
            return candidate.due <= timer.due + timer.tolerance;
        });
        if (isTolerated)
            wakeUp = std::max(wakeUp.value_or(Date::min()), candidate.due);
    }
    return wakeUp;
}

void EngineModel::wake(Date wakeUp)
{
    now = std::max(now, wakeUp);
    fireOverdue();
}

void EngineModel::jump(Interval interval)
{
    now += interval;
    for (ModelTimer &timer : m_timers) {
        if (timer.kind == TimerKind::Tick)
            timer.due = std::min<Date>(timer.due, now + 60s);
        if (timer.kind == TimerKind::Ring)
            timer.due = std::min<Date>(timer.due, now + 100ms);
    }
    fireOverdue();
}

std::vector<ObservedTimer> EngineModel::timers() const
{
    std::vector<ObservedTimer> result;
    for (const ModelTimer &timer : m_timers) {
        switch (timer.kind) {
        case TimerKind::Next:
            result.push_back({timer.due, 0s, 10s});
            break;
        case TimerKind::Tick:
            result.push_back({timer.due, 60s, 5s});
            break;
        case TimerKind::Ring:
            result.push_back({timer.due, 100ms, 0s});
            break;
        }
    }
    std::sort(result.begin(), result.end());
    return result;
}

void EngineModel::fireOverdue()
{
    // Each timer that is overdue now fires once, the earliest first, unless an earlier one cancels it.
    std::vector<ModelTimer> overdue;
    std::copy_if(m_timers.begin(), m_timers.end(), std::back_inserter(overdue),
                 [&](const ModelTimer &timer) { return timer.due <= now; });
    std::sort(overdue.begin(), overdue.end(), [](const ModelTimer &left, const ModelTimer &right) {
        return std::tie(left.due, left.serial) < std::tie(right.due, right.serial);
    });
    for (const ModelTimer &timer : overdue)
        fire(timer.serial);
}

void EngineModel::fire(int serial)
{
    const auto timer = std::find_if(m_timers.begin(), m_timers.end(),
                                    [&](const ModelTimer &candidate) { return candidate.serial == serial; });
    if (timer == m_timers.end())
        return;
    const TimerKind kind = timer->kind;
    if (kind == TimerKind::Next) {
        m_timers.erase(timer);
        apply(idleSeconds >= 300 ? Event::DueAway : Event::DuePresent);
        return;
    }
    const Interval step = kind == TimerKind::Tick ? Interval(60s) : Interval(100ms);
    while (timer->due <= now)
        timer->due += ((now - timer->due) / step + 1) * step;
    if (kind == TimerKind::Tick)
        effects.push_back({Effect::Kind::Change});
    else
        ringTick();
}

void EngineModel::ringTick()
{
    if (*m_breakEnd <= now) {
        apply(Event::Over);
        return;
    }
    const double left = std::chrono::duration<double>(*m_breakEnd - now).count();
    effects.push_back({Effect::Kind::Update, left, left / pauseSeconds});
}

void EngineModel::add(TimerKind kind, Date due)
{
    m_timers.push_back({kind, due, ++m_lastSerial});
}

void EngineModel::remove(TimerKind kind)
{
    std::erase_if(m_timers, [&](const ModelTimer &timer) { return timer.kind == kind; });
}

bool EngineModel::has(TimerKind kind) const
{
    return std::any_of(m_timers.begin(), m_timers.end(),
                       [&](const ModelTimer &timer) { return timer.kind == kind; });
}
