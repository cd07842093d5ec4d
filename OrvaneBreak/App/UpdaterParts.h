// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "HomeInstaller.h"
#include "JsonPreferences.h"
#include "OnDemandDownloads.h"
#include "StandardUpdaterController.h"
#include "UpdateDownload.h"
#include "UpdaterDialogs.h"

#include <filesystem>
#include <functional>

/// The updater and everything it needs. Its settings are in updater.json beside the preferences, its
/// downloads in OrvaneBreak/updates in the user's cache folder.
class UpdaterParts
{
public:
    /// The exit status of the event loop that asks for a restart of the program.
    static constexpr int relaunchStatus = 1000;

    /// The references outlive this object.
    UpdaterParts(RunLoop &runLoop, Http &http, AlertQueue &alerts, const Bundle &bundle,
                 const std::filesystem::path &preferencesFolder, std::function<void()> openMakersPage);

    /// Takes back this start from the trial of a new version: the program ends without having shown anything,
    /// because there is no display or another instance runs.
    static void takeBackStart();

    [[nodiscard]] SPUStandardUpdaterController &controller() { return m_controller; }

    /// The file to execute for a restart, which starts the version that is installed by then.
    [[nodiscard]] const std::filesystem::path &launcher() const { return m_launcher; }

private:
    using Place = std::variant<Installation, NoInstallation>;

    UpdaterParts(RunLoop &runLoop, Http &http, AlertQueue &alerts, const Place &place,
                 const SPUUpdater::Configuration &configuration,
                 const std::filesystem::path &preferencesFolder, std::function<void()> openMakersPage);

    std::filesystem::path m_launcher;
    JsonPreferences m_settings;
    FeedThread m_feedThread;
    OnDemandDownloads m_downloads;
    UpdateDownload m_download;
    HomeInstaller m_installer;
    UpdaterDialogs m_dialogs;
    SPUStandardUpdaterController m_controller;
};
