// SPDX-License-Identifier: GPL-3.0-or-later
#include "MachineTime.h"

#include <ctime>

namespace {

std::chrono::nanoseconds timeOf(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

MachineTime MachineTime::now()
{
    const std::chrono::nanoseconds awake = timeOf(CLOCK_MONOTONIC);
    return {awake, timeOf(CLOCK_BOOTTIME) - awake};
}
