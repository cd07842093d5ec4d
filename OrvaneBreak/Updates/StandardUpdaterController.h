// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <chrono>

class Preferences;

/// What the updater does by itself. Its settings are its own and lie in a file of its own, beside the
/// preferences. User-interface thread.
class SPUUpdater
{
public:
    /// `settings` is the updater's own store and outlives it.
    explicit SPUUpdater(Preferences &settings);

    /// Time between two automatic checks, kept under "SUScheduledCheckInterval" in seconds; one day when
    /// missing or not positive.
    [[nodiscard]] std::chrono::seconds updateCheckInterval() const;
    void setUpdateCheckInterval(std::chrono::seconds interval);

    /// Whether to look for updates unasked, kept under "SUEnableAutomaticChecks"; false when missing.
    [[nodiscard]] bool automaticallyChecksForUpdates() const;
    void setAutomaticallyChecksForUpdates(bool checks);

    /// Whether to install what was found unasked, kept under "SUAutomaticallyUpdate"; false when missing.
    [[nodiscard]] bool automaticallyDownloadsUpdates() const;
    void setAutomaticallyDownloadsUpdates(bool downloads);

private:
    Preferences &m_settings;
};

/// The updater with its windows.
class SPUStandardUpdaterController final : public QObject
{
    Q_OBJECT

public:
    explicit SPUStandardUpdaterController(Preferences &settings);

    [[nodiscard]] SPUUpdater &updater() { return m_updater; }

    /// Looks for an update at the user's request and shows what comes of it.
    void checkForUpdates();

private:
    SPUUpdater m_updater;
};
