// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdaterParts.h"

#include "ArchiveModule.h"
#include "Http.h"
#include "InstallationChange.h"
#include "Module.h"
#include "UserFolders.h"

#include <QCoreApplication>
#include <QFile>

#include <system_error>
#include <tuple>
#include <utility>

namespace {

std::filesystem::path launcherOf(const std::variant<Installation, NoInstallation> &place)
{
    if (const auto *installation = std::get_if<Installation>(&place))
        return installation->launcher();
    return QFile::encodeName(QCoreApplication::applicationFilePath()).toStdString();
}

std::unique_ptr<ArchiveReader> openArchive(QByteArrayView bytes)
{
    return Module::make(&ArchiveModule::open, bytes);
}

} // namespace

UpdaterParts::UpdaterParts(RunLoop &runLoop, Http &http, AlertQueue &alerts, const Bundle &bundle,
                           const std::filesystem::path &preferencesFolder,
                           std::function<void()> openMakersPage)
    : UpdaterParts(
          runLoop, http, alerts,
          Installation::ofProgram(QFile::encodeName(QCoreApplication::applicationDirPath()).toStdString()),
          SPUUpdater::Configuration::of(bundle), preferencesFolder, std::move(openMakersPage))
{
}

UpdaterParts::UpdaterParts(RunLoop &runLoop, Http &http, AlertQueue &alerts, const Place &place,
                           const SPUUpdater::Configuration &configuration,
                           const std::filesystem::path &preferencesFolder,
                           std::function<void()> openMakersPage)
    : m_launcher(launcherOf(place))
    , m_settings(preferencesFolder / "updater.json")
    , m_download(m_downloads, runLoop, UserFolders::cache() / "OrvaneBreak" / "updates")
    , m_installer(place, configuration.key, configuration.installed, &openArchive)
    , m_dialogs(alerts)
    , m_controller(true,
                   {runLoop, m_settings, http,
                    [this](const QByteArray &bytes, const Ed25519::PublicKey &key, QObject &context,
                           FeedThread::Completion completion) {
                        m_feedThread.read(bytes, key, &Http::isAllowed, context, std::move(completion));
                    },
                    m_download, m_installer, m_dialogs, [] { QCoreApplication::exit(relaunchStatus); },
                    std::move(openMakersPage)},
                   configuration)
{
}

void UpdaterParts::takeBackStart()
{
    std::error_code error;
    const auto place =
        Installation::ofProgram(std::filesystem::read_symlink("/proc/self/exe", error).parent_path());
    const auto *installation = std::get_if<Installation>(&place);
    if (!installation || installation->trial().version.text() != installation->running().text())
        return;
    if (auto change = InstallationChange::begin(*installation))
        std::ignore = change->takeBackStart();
}
