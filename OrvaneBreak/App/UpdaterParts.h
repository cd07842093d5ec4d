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

/// The updater of the product with all that it works with. Its settings are in updater.json beside the
/// preferences, what it downloads is in the user's folder for caches.
class UpdaterParts
{
public:
    /// The status that the event loop ends with when the program is to start again.
    static constexpr int relaunchStatus = 1000;

    /// The references outlive this object.
    UpdaterParts(RunLoop &runLoop, Http &http, AlertQueue &alerts, const Bundle &bundle,
                 const std::filesystem::path &preferencesFolder, std::function<void()> openMakersPage);

    [[nodiscard]] SPUStandardUpdaterController &controller() { return m_controller; }

    /// What starts the program, whichever version that is by then.
    [[nodiscard]] const std::filesystem::path &launcher() const { return m_launcher; }

private:
    using Place = std::variant<Installation, NoInstallation>;

    UpdaterParts(RunLoop &runLoop, Http &http, AlertQueue &alerts, const Place &place,
                 const SPUUpdater::Configuration &configuration,
                 const std::filesystem::path &preferencesFolder, std::function<void()> openMakersPage);

    std::filesystem::path m_launcher;
    JsonPreferences m_settings;
    OnDemandDownloads m_downloads;
    UpdateDownload m_download;
    HomeInstaller m_installer;
    UpdaterDialogs m_dialogs;
    SPUStandardUpdaterController m_controller;
};
