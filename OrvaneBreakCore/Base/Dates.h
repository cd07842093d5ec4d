// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>

#include <chrono>

/// The UTC date and time of the wall-clock time `date`, rounded down to the millisecond. Any thread.
[[nodiscard]] QDateTime calendarDate(std::chrono::sys_time<std::chrono::microseconds> date);

/// The wall-clock time of `date`, which is valid. Any thread.
[[nodiscard]] std::chrono::sys_time<std::chrono::microseconds> wallClockDate(const QDateTime &date);
