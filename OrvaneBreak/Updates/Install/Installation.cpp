// SPDX-License-Identifier: GPL-3.0-or-later
#include "Installation.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

namespace {

constexpr qint64 trialLimit = 128;

bool isWritable(const std::filesystem::path &folder)
{
    return faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool isOfTheSystem(const std::filesystem::path &folder)
{
    static const std::array<std::filesystem::path, 6> roots{"/usr", "/opt", "/app", "/snap", "/nix", "/gnu"};
    const bool isBelowOne = std::any_of(roots.begin(), roots.end(), [&](const auto &root) {
        return std::mismatch(root.begin(), root.end(), folder.begin(), folder.end()).first == root.end();
    });
    struct stat status = {};
    return isBelowOne || (stat(folder.c_str(), &status) == 0 && status.st_uid != geteuid());
}

UpdateVersion versionNamed(const std::filesystem::path &name)
{
    return UpdateVersion(QString::fromStdString(name.string()));
}

} // namespace

Installation::Installation(std::filesystem::path root, UpdateVersion running)
    : m_root(std::move(root))
    , m_running(std::move(running))
{
}

std::variant<Installation, NoInstallation> Installation::ofProgram(const std::filesystem::path &bin)
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::canonical(bin, error);
    const std::filesystem::path versions = folder.parent_path().parent_path();
    const Installation found(versions.parent_path(), versionNamed(folder.parent_path().filename()));
    const bool isInPlace = folder.filename() == "bin" && versions.filename() == "versions" &&
                           found.running().isValid() && found.current().isValid();
    if (!isInPlace)
        return isOfTheSystem(folder) ? NoInstallation::PackageManager : NoInstallation::BuildTree;
    if (!isWritable(found.root()) || !isWritable(versions))
        return NoInstallation::NotWritable;
    return found;
}

UpdateVersion Installation::current() const
{
    return linkedVersion("current");
}

UpdateVersion Installation::previous() const
{
    return linkedVersion("previous");
}

UpdateVersion Installation::linkedVersion(const char *link) const
{
    std::error_code error;
    const std::filesystem::path target = std::filesystem::read_symlink(m_root / link, error);
    return target.parent_path() == "versions" ? versionNamed(target.filename()) : UpdateVersion();
}

Installation::Trial Installation::trialIn(const char *name) const
{
    QFile file(m_root / name);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QStringList lines = QString::fromUtf8(file.read(trialLimit)).split(u'\n');
    return {UpdateVersion(lines.first().trimmed()), lines.value(1).toInt()};
}

Installation::Trial Installation::trial() const
{
    // The process may have been killed after it wrote the file and before the version became current.
    const Trial found = trialIn("trial");
    return found.version.text() == current().text() ? found : Trial();
}

UpdateVersion Installation::failed() const
{
    const UpdateVersion version = trialIn("failed").version;
    return version == current() ? UpdateVersion() : version;
}

bool Installation::hasPrograms(const std::filesystem::path &version)
{
    return access((version / "bin" / "orvanebreak").c_str(), X_OK) == 0 &&
           access((version / "bin" / "orvanebreak-program").c_str(), X_OK) == 0;
}

std::filesystem::path Installation::launcher() const
{
    return m_root / "current" / "bin" / "orvanebreak";
}

std::filesystem::path Installation::versionsFolder() const
{
    return m_root / "versions";
}

std::filesystem::path Installation::folderOf(const UpdateVersion &version) const
{
    return versionsFolder() / version.text().toStdString();
}
