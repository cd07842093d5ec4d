// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"
#include "UpdateVersion.h"

#include <QDateTime>

#include <chrono>
#include <optional>

class Preferences;

/// The updater's settings and state, in a store separate from the application's preferences. Every call reads
/// the store. User-interface thread only.
class UpdaterSettings
{
public:
    /// `store` outlives this object.
    explicit UpdaterSettings(Preferences &store);

    /// "SUScheduledCheckInterval", in seconds; one day when missing or not positive, otherwise limited to
    /// between a minute and 100 years.
    [[nodiscard]] std::chrono::seconds checkInterval() const;
    void setCheckInterval(std::chrono::seconds interval);

    /// "SUEnableAutomaticChecks"; absent until the user has decided.
    [[nodiscard]] std::optional<bool> automaticChecks() const;
    void setAutomaticChecks(bool checks);

    /// "SUAutomaticallyUpdate"; false when missing.
    [[nodiscard]] bool automaticDownloads() const;
    void setAutomaticDownloads(bool downloads);

    /// "SUSkippedVersion"; no version when the user skipped none.
    [[nodiscard]] UpdateVersion skippedVersion() const;
    void setSkippedVersion(const UpdateVersion &version);

    /// The version activated last, kept under "SUTriedVersion"; no version when there was none. It was rolled
    /// back if it is newer than the running version.
    [[nodiscard]] UpdateVersion triedVersion() const;
    void setTriedVersion(const UpdateVersion &version);

    /// Records a start under "SUHasLaunchedBefore"; returns whether there was one before.
    [[nodiscard]] bool recordLaunch();

    /// Dates; absent when missing or invalid. "SULastCheckTime": the last check. "SULastSuccessTime": the
    /// last check whose feed was not older than an earlier one. "SURemindTime": no unasked offer until then,
    /// unless the update is critical.
    [[nodiscard]] std::optional<Date> lastCheck() const;
    void setLastCheck(Date date);
    [[nodiscard]] std::optional<Date> lastSuccess() const;
    void setLastSuccess(Date date);
    [[nodiscard]] std::optional<Date> remindAfter() const;
    void setRemindAfter(Date date);

    /// The date of the newest feed so far, kept under "SUFeedDate"; invalid when missing.
    [[nodiscard]] QDateTime newestFeed() const;
    void setNewestFeed(const QDateTime &date);

private:
    [[nodiscard]] std::optional<Date> date(const QString &key) const;
    void setDate(const QString &key, Date date);

    Preferences &m_store;
};
