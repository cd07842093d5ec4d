// SPDX-License-Identifier: GPL-3.0-or-later
#include "InstallationChange.h"

#include "FileCalls.h"

#include <QRandomGenerator>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr std::string_view stagingPrefix = ".staging-";
constexpr auto trialName = "trial";
constexpr auto failedName = "failed";

std::string temporaryName(const char *name)
{
    return std::string(".new-") + name;
}

std::string newStagingName()
{
    return std::string(stagingPrefix) +
           QByteArray::number(QRandomGenerator::system()->generate64(), 16).toStdString();
}

FileDescriptor openFolder(const std::filesystem::path &path)
{
    return FileDescriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

bool isGone(int folder, const char *name)
{
    return unlinkat(folder, name, 0) == 0 || errno == ENOENT;
}

QString systemProblem(const QString &step)
{
    return step + u": "_s + QString::fromLocal8Bit(std::strerror(errno));
}

std::vector<std::string> namesIn(const std::filesystem::path &folder)
{
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error); !error && entry != end(entry);
         entry.increment(error))
        names.push_back(entry->path().filename().string());
    return names;
}

} // namespace

InstallationChange::InstallationChange(const Installation &installation)
    : m_installation(installation)
    , m_root(openFolder(installation.root()))
    , m_versions(openFolder(installation.versionsFolder()))
    , m_lock(openat(m_root.get(), ".lock", O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR))
{
}

std::optional<InstallationChange> InstallationChange::begin(const Installation &installation)
{
    InstallationChange change(installation);
    if (!change.m_versions.isOpen() || !change.m_lock.isOpen() ||
        flock(change.m_lock.get(), LOCK_EX | LOCK_NB) != 0)
        return std::nullopt;
    change.removeLeftovers();
    return change;
}

void InstallationChange::removeLeftovers() const
{
    for (const std::string &name : namesIn(m_installation.versionsFolder())) {
        std::error_code error;
        if (name.starts_with(stagingPrefix))
            std::filesystem::remove_all(m_installation.versionsFolder() / name, error);
    }
    removeTemporaryNames();
    if (!m_installation.trial().version.isValid())
        unlinkat(m_root.get(), trialName, 0);
}

void InstallationChange::removeTemporaryNames() const
{
    for (const char *name : {"current", "previous", trialName})
        unlinkat(m_root.get(), temporaryName(name).c_str(), 0);
}

std::filesystem::path InstallationChange::newStagingFolder() const
{
    return m_installation.versionsFolder() / newStagingName();
}

std::optional<QString> InstallationChange::stage(const std::filesystem::path &unpacked,
                                                 const UpdateVersion &version)
{
    const std::filesystem::path staging = unpacked.parent_path().filename();
    const std::string name = version.text().toStdString();
    if (!version.isValid() || !staging.string().starts_with(stagingPrefix))
        return u"not a version in a staging folder"_s;
    if (!(version > m_installation.current()) || !(version > m_installation.running()))
        return u"not a newer version: "_s + version.text();
    if (!Installation::hasPrograms(unpacked))
        return u"no programs in it"_s;
    if (!discardVersion(name))
        return systemProblem(u"removing what was left of "_s + version.text());
    if (renameat(m_versions.get(), (staging / unpacked.filename()).c_str(), m_versions.get(), name.c_str()) !=
            0 ||
        !syncToDisk(m_versions.get()))
        return systemProblem(u"moving the new version into place"_s);
    std::error_code error;
    std::filesystem::remove_all(m_installation.versionsFolder() / staging, error);
    return std::nullopt;
}

std::optional<QString> InstallationChange::activate(const UpdateVersion &version)
{
    const UpdateVersion before = m_installation.current();
    if (version.isValid() && before.text() == version.text())
        return std::nullopt;
    if (!(version > before) || !Installation::hasPrograms(m_installation.folderOf(version)))
        return u"no newer whole version: "_s + version.text();
    if (activateSteps(before, version))
        return std::nullopt;
    const QString problem = systemProblem(u"switching to "_s + version.text());
    removeTemporaryNames();
    unlinkat(m_root.get(), trialName, 0);
    return problem;
}

bool InstallationChange::activateSteps(const UpdateVersion &before, const UpdateVersion &version) const
{
    // The rollback needs the link and the trial on the disk before the new version is current.
    const bool isProven = !m_installation.trial().version.isValid();
    if ((isProven && !placeLink("previous", before)) || !placeTrial({version}) || !syncToDisk(m_root.get()) ||
        !placeLink("current", version))
        return false;
    // The new version is current even if this fails.
    syncToDisk(m_root.get());
    return true;
}

std::optional<QString> InstallationChange::takeBackStart()
{
    const Installation::Trial trial = m_installation.trial();
    if (trial.starts == 0 || placeTrial({trial.version, trial.starts - 1}))
        return std::nullopt;
    return systemProblem(u"taking back a start"_s);
}

std::optional<QString> InstallationChange::forgetFailure()
{
    const UpdateVersion failed = m_installation.failed();
    if (failed.isValid() && failed.text() != m_installation.running().text() &&
        !discardVersion(failed.text().toStdString()))
        return systemProblem(u"removing "_s + failed.text());
    if (!isGone(m_root.get(), failedName))
        return systemProblem(u"forgetting a failure"_s);
    return std::nullopt;
}

std::optional<QString> InstallationChange::confirm()
{
    const UpdateVersion current = m_installation.current();
    if (!current.isValid() || current.text() != m_installation.running().text())
        return std::nullopt;
    if (!endTrial())
        return systemProblem(u"ending the trial"_s);
    const std::string previous = m_installation.previous().text().toStdString();
    for (const std::string &name : namesIn(m_installation.versionsFolder())) {
        const bool isVersion = UpdateVersion(QString::fromStdString(name)).isValid();
        if (isVersion && name != current.text().toStdString() && name != previous && !discardVersion(name))
            return systemProblem(u"removing "_s + QString::fromStdString(name));
    }
    return std::nullopt;
}

bool InstallationChange::placeLink(const char *name, const UpdateVersion &version) const
{
    const std::string target = "versions/" + version.text().toStdString();
    const std::string temporary = temporaryName(name);
    return symlinkat(target.c_str(), m_root.get(), temporary.c_str()) == 0 &&
           renameat(m_root.get(), temporary.c_str(), m_root.get(), name) == 0;
}

bool InstallationChange::placeTrial(const Installation::Trial &trial) const
{
    const std::string temporary = temporaryName(trialName);
    const FileDescriptor file(openat(m_root.get(), temporary.c_str(),
                                     O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                     S_IRUSR | S_IWUSR));
    const QByteArray content = trial.version.text().toUtf8() + '\n' + QByteArray::number(trial.starts) + '\n';
    return file.isOpen() && writeBytes(file.get(), content) && syncToDisk(file.get()) &&
           renameat(m_root.get(), temporary.c_str(), m_root.get(), trialName) == 0;
}

bool InstallationChange::endTrial() const
{
    return isGone(m_root.get(), trialName) && syncToDisk(m_root.get());
}

bool InstallationChange::discardVersion(const std::string &name) const
{
    // Renamed first: a partly removed folder must not have a version's name.
    const std::string aside = newStagingName();
    if (renameat(m_versions.get(), name.c_str(), m_versions.get(), aside.c_str()) != 0)
        return errno == ENOENT;
    std::error_code error;
    std::filesystem::remove_all(m_installation.versionsFolder() / aside, error);
    return true;
}
