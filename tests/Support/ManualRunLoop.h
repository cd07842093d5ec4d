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

    /// Advances the clock, wakes at each date that the timers request, and fires the timers due then.
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

    /// Simulates a blocked thread: time passes, then every timer that is due fires.
    void block(Interval interval)
    {
        m_now += interval;
        schedule().fireDue(m_now);
    }

    /// Sets the clock or ends a suspend: the time changes, then the overdue timers fire.
    void jump(Interval interval)
    {
        m_now += interval;
        schedule().clockChanged(m_now);
        schedule().fireDue(m_now);
    }

    /// The next wake-up that the timers request.
    [[nodiscard]] std::optional<Date> nextWakeUp() const { return schedule().nextWakeUp(); }

    [[nodiscard]] std::vector<TimerSchedule::Entry> timers() const { return schedule().entries(); }
    [[nodiscard]] int wakeUps() const { return m_wakeUps; }

protected:
    void scheduleChanged() override {}

private:
    // An arbitrary date, which no test depends on.
    Date m_now{std::chrono::seconds(1'700'000'000)};
    int m_wakeUps = 0;
};
