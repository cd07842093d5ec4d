// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdateVersion.h"

#include <filesystem>
#include <variant>

/// Why the running program cannot update itself.
enum class NoInstallation
{
    PackageManager, ///< In a system folder, or in one that belongs to another user.
    BuildTree,      ///< Anywhere else: a build tree, or an unpacked but not installed archive.
    NotWritable,    ///< Installed by `install`, but this user may not write to the installation.
};

/// An installation in the user's home directory, with several versions side by side:
///
///     <root>/versions/<version>/{bin,lib,share,install,uninstall}
///     <root>/current            link to the version in use: "versions/<version>"
///     <root>/previous           link to the previous version, if any
///     <root>/trial              contains the current version until that has passed its trial
///
/// Read-only; every call reads the disk. InstallationChange changes it. Any thread.
class Installation
{
public:
    /// The installation in `root`; the calling program is of the version `running`.
    Installation(std::filesystem::path root, UpdateVersion running);

    /// The installation of the program in the folder `bin`, with links resolved.
    [[nodiscard]] static std::variant<Installation, NoInstallation>
    ofProgram(const std::filesystem::path &bin);

    [[nodiscard]] const std::filesystem::path &root() const { return m_root; }

    /// The version of the calling program; another one may have become current since its start.
    [[nodiscard]] const UpdateVersion &running() const { return m_running; }

    /// The targets of the links; no version when a link is missing or leads elsewhere.
    [[nodiscard]] UpdateVersion current() const;
    [[nodiscard]] UpdateVersion previous() const;

    /// Whether the current version has not passed its trial yet.
    [[nodiscard]] bool isOnTrial() const;

    /// Whether the folder `version` has the launcher and the program.
    [[nodiscard]] static bool hasPrograms(const std::filesystem::path &version);

    /// Starts the version that is current at that time: "<root>/current/bin/orvanebreak".
    [[nodiscard]] std::filesystem::path launcher() const;

    /// The folder of the versions and of staging folders.
    [[nodiscard]] std::filesystem::path versionsFolder() const;

    /// The folder of one version, which need not exist.
    [[nodiscard]] std::filesystem::path folderOf(const UpdateVersion &version) const;

private:
    [[nodiscard]] UpdateVersion linkedVersion(const char *link) const;

    std::filesystem::path m_root;
    UpdateVersion m_running;
};
