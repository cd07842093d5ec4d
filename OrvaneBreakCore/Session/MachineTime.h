// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

/// How long the machine has been awake, and how long asleep, since it started.
struct MachineTime
{
    std::chrono::nanoseconds awake{};
    std::chrono::nanoseconds asleep{}; ///< Exact to within the time between two readings of a clock.

    [[nodiscard]] static MachineTime now();
};
