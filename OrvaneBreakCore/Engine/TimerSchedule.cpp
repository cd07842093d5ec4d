// SPDX-License-Identifier: GPL-3.0-or-later
#include "TimerSchedule.h"

#include <algorithm>
#include <utility>

TimerSchedule::TimerSchedule(std::function<void()> changed)
    : m_changed(std::move(changed))
{
}

std::uint64_t TimerSchedule::add(Entry entry)
{
    const std::uint64_t identifier = ++m_lastIdentifier;
    m_entries.emplace(identifier, std::move(entry));
    notifyChanged();
    return identifier;
}

void TimerSchedule::remove(std::uint64_t identifier)
{
    if (m_entries.erase(identifier) > 0)
        notifyChanged();
}

std::optional<Date> TimerSchedule::nextWakeUp() const
{
    if (m_entries.empty())
        return std::nullopt;
    Date deadline = Date::max();
    for (const auto &[identifier, entry] : m_entries)
        deadline = std::min(deadline, entry.due + entry.tolerance);
    // The latest due date before the first deadline serves every overlapping timer, and a lone timer exactly
    // on time.
    Date wakeUp = Date::min();
    for (const auto &[identifier, entry] : m_entries) {
        if (entry.due <= deadline)
            wakeUp = std::max(wakeUp, entry.due);
    }
    return wakeUp;
}

void TimerSchedule::fireDue(Date now)
{
    std::vector<std::pair<Date, std::uint64_t>> due;
    for (const auto &[identifier, entry] : m_entries) {
        if (entry.due <= now)
            due.emplace_back(entry.due, identifier);
    }
    std::sort(due.begin(), due.end());

    const bool wasFiring = std::exchange(m_isFiring, true);
    for (const auto &[date, identifier] : due) {
        const auto found = m_entries.find(identifier);
        if (found == m_entries.end() || found->second.due > now)
            continue;
        // A copy: the action may remove its own timer, and with it the stored function.
        const std::function<void()> action = found->second.action;
        Entry &entry = found->second;
        if (entry.interval > Interval::zero())
            entry.due += ((now - entry.due) / entry.interval + 1) * entry.interval;
        else
            m_entries.erase(found);
        action();
    }
    m_isFiring = wasFiring;
    if (!due.empty())
        notifyChanged();
}

void TimerSchedule::clockChanged(Date now)
{
    for (auto &[identifier, entry] : m_entries) {
        if (entry.interval > Interval::zero())
            entry.due = std::min(entry.due, now + entry.interval);
    }
    notifyChanged();
}

std::vector<TimerSchedule::Entry> TimerSchedule::entries() const
{
    std::vector<Entry> result;
    for (const auto &[identifier, entry] : m_entries)
        result.push_back(entry);
    return result;
}

void TimerSchedule::notifyChanged()
{
    if (!m_isFiring && m_changed)
        m_changed();
}
