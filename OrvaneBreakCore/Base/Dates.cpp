// SPDX-License-Identifier: GPL-3.0-or-later
#include "Dates.h"

#include <QTimeZone>

QDateTime calendarDate(std::chrono::sys_time<std::chrono::microseconds> date)
{
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(date.time_since_epoch());
    return QDateTime::fromMSecsSinceEpoch(milliseconds.count(), QTimeZone::utc());
}

std::chrono::sys_time<std::chrono::microseconds> wallClockDate(const QDateTime &date)
{
    return std::chrono::sys_time<std::chrono::microseconds>(
        std::chrono::milliseconds(date.toMSecsSinceEpoch()));
}
