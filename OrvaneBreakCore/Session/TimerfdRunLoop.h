// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"

#include <QSocketNotifier>

#include <optional>

/// The run loop of the program: one CLOCK_REALTIME timerfd on the thread's Qt event loop serves every timer.
/// It causes no wake-up without timers and between them. User-interface thread only.
class TimerfdRunLoop final : public RunLoop
{
public:
    /// Dates are compared with the time of `clock`; tests have clocks of their own.
    explicit TimerfdRunLoop(std::function<Date()> clock = systemNow);
    ~TimerfdRunLoop() override;

    [[nodiscard]] Date now() const override { return m_clock(); }

    /// The system's wall clock.
    [[nodiscard]] static Date systemNow();

    /// Called at every wake-up, before the timers.
    std::function<void()> onWakeUp;

    /// Runs the timers that are due after the clock was set or the machine resumed. The kernel's report of
    /// either calls this.
    void clockWasSet();

protected:
    void scheduleChanged() override;

private:
    void descriptorReadable();
    void arm(std::optional<Date> wakeUp);

    std::function<Date()> m_clock;
    int m_descriptor;
    QSocketNotifier m_notifier;
    std::optional<Date> m_armed;
};
