// SPDX-License-Identifier: GPL-3.0-or-later
#include "SleepAwareUserIdle.h"

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// The two clocks are not read at the same moment.
constexpr std::chrono::seconds minSleep = 1s;

/// Time awake after which a sleep no longer matters: without input since then the user is away in any case.
constexpr std::chrono::hours maxSleepAge = 1h;

} // namespace

SleepAwareUserIdle::SleepAwareUserIdle(const UserIdle &source, Resolution resolution,
                                       std::function<MachineTime()> clock)
    : m_source(source)
    , m_resolution(std::move(resolution))
    , m_clock(std::move(clock))
    , m_asleep(m_clock().asleep)
{
}

void SleepAwareUserIdle::noteSleep()
{
    const MachineTime now = m_clock();
    const std::chrono::nanoseconds length = now.asleep - m_asleep;
    if (length < minSleep)
        return;
    m_asleep = now.asleep;
    std::erase_if(m_sleeps, [&](const Sleep &sleep) { return now.awake - sleep.resume > maxSleepAge; });
    m_sleeps.push_back({now.awake, length});
}

InputIdleSeconds SleepAwareUserIdle::secondsSinceLastInput() const
{
    InputIdleSeconds seconds = m_source.secondsSinceLastInput();
    const std::chrono::nanoseconds awake = m_clock().awake;
    const std::chrono::duration<double> resolution = m_resolution();
    for (double &figure : seconds) {
        const auto sinceInput = std::max(std::chrono::duration<double>(figure), resolution);
        for (const Sleep &sleep : m_sleeps) {
            if (sinceInput >= awake - sleep.resume)
                figure += std::chrono::duration<double>(sleep.length).count();
        }
    }
    return seconds;
}
