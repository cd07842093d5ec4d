// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"
#include "UpdateVersion.h"

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

    /// Records that `version` could not be used, under "SUPausedVersion" and "SUPausedTime"; forgets others.
    void pause(const UpdateVersion &version, Date now);

    /// When pause() was called for `version`; absent when it was not the last one.
    [[nodiscard]] std::optional<Date> pausedSince(const UpdateVersion &version) const;

    /// A number from 0 to 6 that stays the same for this user: "SUUpdateGroupIdentifier".
    [[nodiscard]] int rolloutGroup();

    /// Records a start under "SUHasLaunchedBefore"; returns whether there was one before.
    [[nodiscard]] bool recordLaunch();

    /// Dates; absent when missing or invalid. "SULastCheckTime": the last check. "SULastSuccessTime": the
    /// last check with a valid feed, or the first failure if there was none. "SULastWarningTime": when the
    /// user was told that there was none for long. "SURemindTime": no unasked offer until then, unless the
    /// update is critical.
    [[nodiscard]] std::optional<Date> lastCheck() const;
    void setLastCheck(Date date);
    [[nodiscard]] std::optional<Date> lastSuccess() const;
    void setLastSuccess(Date date);
    [[nodiscard]] std::optional<Date> lastWarning() const;
    void setLastWarning(Date date);
    [[nodiscard]] std::optional<Date> remindAfter() const;
    void setRemindAfter(Date date);

    /// The highest serial number of a feed so far, kept under "SUFeedSerial"; 0 when there was none.
    [[nodiscard]] qint64 feedSerial() const;
    void setFeedSerial(qint64 serial);

private:
    [[nodiscard]] std::optional<Date> date(const QString &key) const;
    void setDate(const QString &key, Date date);

    Preferences &m_store;
};
