// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdaterSettings.h"

#include "Dates.h"
#include "Preferences.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QString intervalKey = u"SUScheduledCheckInterval"_s;
const QString checksKey = u"SUEnableAutomaticChecks"_s;
const QString downloadsKey = u"SUAutomaticallyUpdate"_s;
const QString skippedKey = u"SUSkippedVersion"_s;
const QString triedKey = u"SUTriedVersion"_s;
const QString launchedKey = u"SUHasLaunchedBefore"_s;
const QString lastCheckKey = u"SULastCheckTime"_s;
const QString lastSuccessKey = u"SULastSuccessTime"_s;
const QString remindKey = u"SURemindTime"_s;
const QString feedDateKey = u"SUFeedDate"_s;

constexpr qint64 defaultInterval = 86'400;
constexpr qint64 minimumInterval = 60;
constexpr qint64 maximumInterval = 100LL * 365 * defaultInterval;

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

UpdateVersion UpdaterSettings::triedVersion() const
{
    return UpdateVersion(m_store.text(triedKey).value_or(QString()));
}

void UpdaterSettings::setTriedVersion(const UpdateVersion &version)
{
    m_store.setValue(triedKey, version.text());
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

std::optional<Date> UpdaterSettings::remindAfter() const
{
    return date(remindKey);
}

void UpdaterSettings::setRemindAfter(Date date)
{
    setDate(remindKey, date);
}

QDateTime UpdaterSettings::newestFeed() const
{
    return m_store.date(feedDateKey).value_or(QDateTime());
}

void UpdaterSettings::setNewestFeed(const QDateTime &date)
{
    m_store.setDate(feedDateKey, date);
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
