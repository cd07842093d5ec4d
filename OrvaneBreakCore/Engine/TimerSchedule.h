// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"

#include <map>
#include <optional>
#include <vector>

/// The timers of one run loop and the date of the next wake-up; it neither reads a clock nor waits.
class TimerSchedule
{
public:
    struct Entry
    {
        Date due;
        Interval interval; ///< Zero for a one-shot timer.
        Interval tolerance;
        std::function<void()> action;
    };

    /// `changed` is called after every addition and removal that is not part of `fireDue`.
    explicit TimerSchedule(std::function<void()> changed);

    /// Returns the identifier of the new timer, never 0.
    std::uint64_t add(Entry entry);

    /// Does nothing for an unknown identifier, for example that of a one-shot timer that has fired.
    void remove(std::uint64_t identifier);

    /// The next date to wake at: the earliest one that lies inside the tolerance window of the most urgent
    /// timer and of every other timer whose window that one overlaps, so that they share the wake-up. Absent
    /// without timers.
    [[nodiscard]] std::optional<Date> nextWakeUp() const;

    /// Runs the actions of all timers due at `now`, in the order of their due dates, and moves repeating
    /// timers on by whole intervals past `now`. Actions may add and remove timers; timers added meanwhile
    /// wait for the next call.
    void fireDue(Date now);

    /// To be called when the clock was set or the machine resumed. A repeating timer that is then due more
    /// than one interval after `now`, because the clock was set back, becomes due one interval after `now`.
    void clockChanged(Date now);

    /// All timers in the order of their creation, for inspection.
    [[nodiscard]] std::vector<Entry> entries() const;

private:
    void notifyChanged();

    std::map<std::uint64_t, Entry> m_entries;
    std::function<void()> m_changed;
    std::uint64_t m_lastIdentifier = 0;
    bool m_isFiring = false;
};
