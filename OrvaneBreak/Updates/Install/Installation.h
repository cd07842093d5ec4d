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
///     <root>/trial              the current version, until it has passed its trial, and on a second line how
///                               often it was started
///     <root>/failed             a version that the launcher gave up after two starts, in the same form
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

    struct Trial
    {
        UpdateVersion version;
        int starts = 0;
    };

    /// The trial of the current version; without a version when it is not on trial.
    [[nodiscard]] Trial trial() const;

    /// The version that the launcher gave up; no version when there is none, or when it is current again.
    [[nodiscard]] UpdateVersion failed() const;

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
    [[nodiscard]] Trial trialIn(const char *file) const;

    std::filesystem::path m_root;
    UpdateVersion m_running;
};
