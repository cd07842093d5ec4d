// SPDX-License-Identifier: GPL-3.0-or-later
#include "RunLoop.h"

#include "TimerSchedule.h"

#include <utility>

Timer::Timer(std::weak_ptr<TimerSchedule> schedule, std::uint64_t identifier)
    : m_schedule(std::move(schedule))
    , m_identifier(identifier)
{
}

Timer::~Timer()
{
    invalidate();
}

Timer::Timer(Timer &&other) noexcept
    : m_schedule(std::move(other.m_schedule))
    , m_identifier(std::exchange(other.m_identifier, 0))
{
}

Timer &Timer::operator=(Timer &&other) noexcept
{
    if (this != &other) {
        invalidate();
        m_schedule = std::move(other.m_schedule);
        m_identifier = std::exchange(other.m_identifier, 0);
    }
    return *this;
}

void Timer::invalidate()
{
    const std::uint64_t identifier = std::exchange(m_identifier, 0);
    if (identifier == 0)
        return;
    if (const std::shared_ptr<TimerSchedule> schedule = m_schedule.lock())
        schedule->remove(identifier);
}

RunLoop::RunLoop()
    : m_schedule(std::make_shared<TimerSchedule>([this] { scheduleChanged(); }))
{
}

RunLoop::~RunLoop() = default;

Timer RunLoop::scheduleOnce(Date due, Interval tolerance, std::function<void()> action)
{
    return {m_schedule, m_schedule->add({due, Interval::zero(), tolerance, std::move(action)})};
}

Timer RunLoop::scheduleRepeating(Interval interval, Interval tolerance, std::function<void()> action)
{
    return {m_schedule, m_schedule->add({now() + interval, interval, tolerance, std::move(action)})};
}
