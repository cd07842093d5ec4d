// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdaterSettings.h"

#include "Dates.h"
#include "Preferences.h"

#include <QRandomGenerator>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QString intervalKey = u"SUScheduledCheckInterval"_s;
const QString checksKey = u"SUEnableAutomaticChecks"_s;
const QString downloadsKey = u"SUAutomaticallyUpdate"_s;
const QString skippedKey = u"SUSkippedVersion"_s;
const QString pausedKey = u"SUPausedVersion"_s;
const QString pausedTimeKey = u"SUPausedTime"_s;
const QString groupKey = u"SUUpdateGroupIdentifier"_s;
const QString launchedKey = u"SUHasLaunchedBefore"_s;
const QString lastCheckKey = u"SULastCheckTime"_s;
const QString lastSuccessKey = u"SULastSuccessTime"_s;
const QString remindKey = u"SURemindTime"_s;
const QString warningKey = u"SULastWarningTime"_s;
const QString serialKey = u"SUFeedSerial"_s;

constexpr qint64 defaultInterval = 86'400;
constexpr qint64 minimumInterval = 60;
constexpr qint64 maximumInterval = 100LL * 365 * defaultInterval;
constexpr int rolloutGroups = 7;

} // namespace

UpdaterSettings::UpdaterSettings(Preferences &store)
    : m_store(store)
{
}

std::chrono::seconds UpdaterSettings::checkInterval() const
{
    const qint64 stored = m_store.integer(intervalKey).value_or(0);
    return std::chrono::seconds(stored > 0 ? std::clamp(stored, minimumInterval, maximumInterval)
                                           : defaultInterval);
}

void UpdaterSettings::setCheckInterval(std::chrono::seconds interval)
{
    m_store.setValue(intervalKey, static_cast<qint64>(interval.count()));
}

std::optional<bool> UpdaterSettings::automaticChecks() const
{
    return m_store.boolean(checksKey);
}

void UpdaterSettings::setAutomaticChecks(bool checks)
{
    m_store.setValue(checksKey, checks);
}

bool UpdaterSettings::automaticDownloads() const
{
    return m_store.boolean(downloadsKey).value_or(false);
}

void UpdaterSettings::setAutomaticDownloads(bool downloads)
{
    m_store.setValue(downloadsKey, downloads);
}

UpdateVersion UpdaterSettings::skippedVersion() const
{
    return UpdateVersion(m_store.text(skippedKey).value_or(QString()));
}

void UpdaterSettings::setSkippedVersion(const UpdateVersion &version)
{
    m_store.setValue(skippedKey, version.text());
}

void UpdaterSettings::pause(const UpdateVersion &version, Date now)
{
    m_store.setValue(pausedKey, version.text());
    setDate(pausedTimeKey, now);
}

std::optional<Date> UpdaterSettings::pausedSince(const UpdateVersion &version) const
{
    return version == UpdateVersion(m_store.text(pausedKey).value_or(QString())) ? date(pausedTimeKey)
                                                                                 : std::nullopt;
}

int UpdaterSettings::rolloutGroup()
{
    const qint64 stored = m_store.integer(groupKey).value_or(-1);
    if (stored >= 0 && stored < rolloutGroups)
        return static_cast<int>(stored);
    const int group = QRandomGenerator::system()->bounded(rolloutGroups);
    m_store.setValue(groupKey, group);
    return group;
}

bool UpdaterSettings::recordLaunch()
{
    const bool hasLaunched = m_store.boolean(launchedKey).value_or(false);
    m_store.setValue(launchedKey, true);
    return hasLaunched;
}

std::optional<Date> UpdaterSettings::lastCheck() const
{
    return date(lastCheckKey);
}

void UpdaterSettings::setLastCheck(Date date)
{
    setDate(lastCheckKey, date);
}

std::optional<Date> UpdaterSettings::lastSuccess() const
{
    return date(lastSuccessKey);
}

void UpdaterSettings::setLastSuccess(Date date)
{
    setDate(lastSuccessKey, date);
}

std::optional<Date> UpdaterSettings::lastWarning() const
{
    return date(warningKey);
}

void UpdaterSettings::setLastWarning(Date date)
{
    setDate(warningKey, date);
}

std::optional<Date> UpdaterSettings::remindAfter() const
{
    return date(remindKey);
}

void UpdaterSettings::setRemindAfter(Date date)
{
    setDate(remindKey, date);
}

qint64 UpdaterSettings::feedSerial() const
{
    return m_store.integer(serialKey).value_or(0);
}

void UpdaterSettings::setFeedSerial(qint64 serial)
{
    m_store.setValue(serialKey, serial);
}

std::optional<Date> UpdaterSettings::date(const QString &key) const
{
    const std::optional<QDateTime> stored = m_store.date(key);
    if (!stored)
        return std::nullopt;
    return wallClockDate(*stored);
}

void UpdaterSettings::setDate(const QString &key, Date date)
{
    m_store.setDate(key, calendarDate(date));
}
