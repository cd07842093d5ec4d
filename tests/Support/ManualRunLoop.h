// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"
#include "TimerSchedule.h"

#include <optional>
#include <vector>

/// A run loop whose clock stands still until the test moves it.
class ManualRunLoop final : public RunLoop
{
public:
    [[nodiscard]] Date now() const override { return m_now; }

    /// Lets time pass: wakes at each date at which the timers ask for it and runs what is due then.
    void advance(Interval interval)
    {
        const Date end = m_now + interval;
        for (auto wakeUp = schedule().nextWakeUp(); wakeUp && *wakeUp <= end;
             wakeUp = schedule().nextWakeUp()) {
            m_now = std::max(m_now, *wakeUp);
            ++m_wakeUps;
            schedule().fireDue(m_now);
        }
        m_now = end;
    }

    /// Keeps the thread busy: time passes, and what has become due meanwhile runs at the end.
    void block(Interval interval)
    {
        m_now += interval;
        schedule().fireDue(m_now);
    }

    /// Sets the clock or ends a suspend: first the time changes, then the overdue calls run.
    void jump(Interval interval)
    {
        m_now += interval;
        schedule().clockChanged(m_now);
        schedule().fireDue(m_now);
    }

    /// When the timers ask to be woken next.
    [[nodiscard]] std::optional<Date> nextWakeUp() const { return schedule().nextWakeUp(); }

    [[nodiscard]] std::vector<TimerSchedule::Entry> timers() const { return schedule().entries(); }
    [[nodiscard]] int wakeUps() const { return m_wakeUps; }

protected:
    void scheduleChanged() override {}

private:
    // An arbitrary date: nothing may depend on which one.
    Date m_now{std::chrono::seconds(1'700'000'000)};
    int m_wakeUps = 0;
};
