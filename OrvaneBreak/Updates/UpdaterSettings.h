// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"
#include "UpdateVersion.h"

#include <QDateTime>

#include <chrono>
#include <optional>

class Preferences;

/// What the updater remembers, in a store of its own: the application's preferences hold none of it. Every
/// value is read at each use. User-interface thread only.
class UpdaterSettings
{
public:
    /// `store` outlives this object.
    explicit UpdaterSettings(Preferences &store);

    /// "SUScheduledCheckInterval", in seconds; one day when missing or not positive, otherwise from a minute
    /// to a century.
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

    /// The version that was made to start last, kept under "SUTriedVersion"; no version when there was none.
    /// A newer one than the one that runs has failed.
    [[nodiscard]] UpdateVersion triedVersion() const;
    void setTriedVersion(const UpdateVersion &version);

    /// Whether this is not the first start, kept under "SUHasLaunchedBefore"; remembers that there was one.
    [[nodiscard]] bool noteLaunch();

    /// Dates; absent when missing or none. "SULastCheckTime" is that of the last attempt, "SULastSuccessTime"
    /// that of the last one that brought a feed no older than any before, "SURemindTime" the one until which
    /// the user does not want to be asked again.
    [[nodiscard]] std::optional<Date> lastCheck() const;
    void setLastCheck(Date date);
    [[nodiscard]] std::optional<Date> lastSuccess() const;
    void setLastSuccess(Date date);
    [[nodiscard]] std::optional<Date> remindAfter() const;
    void setRemindAfter(Date date);

    /// The date of the newest feed so far, kept under "SUFeedDate".
    [[nodiscard]] QDateTime newestFeed() const;
    void setNewestFeed(const QDateTime &date);

private:
    [[nodiscard]] std::optional<Date> date(const QString &key) const;
    void setDate(const QString &key, Date date);

    Preferences &m_store;
};
