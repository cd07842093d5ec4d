// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>

#include <chrono>

/// The point `date` on the wall clock in the calendar of UTC, to the millisecond before it. Any thread.
[[nodiscard]] QDateTime calendarDate(std::chrono::sys_time<std::chrono::microseconds> date);

/// The point on the wall clock that the valid `date` means. Any thread.
[[nodiscard]] std::chrono::sys_time<std::chrono::microseconds> wallClockDate(const QDateTime &date);
