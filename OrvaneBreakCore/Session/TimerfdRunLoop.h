// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"

#include <QSocketNotifier>

#include <optional>

/// The run loop of the program: one CLOCK_REALTIME timerfd on the thread's Qt event loop serves every timer.
/// Without timers, and between them, it causes no wake-up. Lives and is used on the user-interface thread.
class TimerfdRunLoop final : public RunLoop
{
public:
    /// `clock` tells the time that dates are compared with; the system's wall clock unless a test says
    /// otherwise.
    explicit TimerfdRunLoop(std::function<Date()> clock = systemNow);
    ~TimerfdRunLoop() override;

    [[nodiscard]] Date now() const override { return m_clock(); }

    /// The system's wall clock.
    [[nodiscard]] static Date systemNow();

    /// Runs what is due after the clock was set or the machine resumed. The kernel's report of either leads
    /// here.
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
