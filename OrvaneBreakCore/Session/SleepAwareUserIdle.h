// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "MachineTime.h"
#include "UserIdle.h"

#include <chrono>
#include <functional>
#include <vector>

/// The idle time of a machine that may have been suspended. The sources count only the time that the machine
/// was awake; this adds the time that it was asleep since the last input. User-interface thread only.
class SleepAwareUserIdle final : public UserIdle
{
public:
    using Resolution = std::function<std::chrono::milliseconds()>;

    /// `source` outlives this object. Its figures below `resolution` read as 0: during that time after a
    /// resume nobody knows whether the last input came before the sleep, and it counts as having done so.
    SleepAwareUserIdle(const UserIdle &source, Resolution resolution,
                       std::function<MachineTime()> clock = &MachineTime::now);

    /// Looks whether the machine was asleep since the last call. To be called soon after every resume: input
    /// between the resume and this call counts as having come before the sleep.
    void noteSleep();

    /// Includes the sleeps noted so far. A sleep of less than a second is ignored.
    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override;

private:
    struct Sleep
    {
        std::chrono::nanoseconds resume; ///< In time awake.
        std::chrono::nanoseconds length;
    };

    const UserIdle &m_source;
    Resolution m_resolution;
    std::function<MachineTime()> m_clock;
    std::chrono::nanoseconds m_asleep; ///< At the last call of `noteSleep`.
    std::vector<Sleep> m_sleeps;       ///< Those that ended within the last hour awake.
};
