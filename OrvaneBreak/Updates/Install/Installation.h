// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdateVersion.h"

#include <filesystem>
#include <variant>

/// Why the running program is none that can replace itself.
enum class NoInstallation
{
    PackageManager, ///< In a folder of the system, or of another user.
    BuildTree,      ///< Anywhere else: a build tree, or an archive that was only unpacked.
    NotWritable,    ///< Installed in the usual way, but this user may not change it.
};

/// The program in the user's home, several versions of it side by side:
///
///     <root>/versions/<version>/{bin,lib,share,install,uninstall}
///     <root>/current            link to the version in use: "versions/<version>"
///     <root>/previous           link to the version used before, once there was one
///     <root>/trial              names the current version until it has once started well
///
/// This only looks; everything is read at each call. InstallationChange changes it. Any thread.
class Installation
{
public:
    /// The installation in `root`, as the program of its version `running` sees it.
    Installation(std::filesystem::path root, UpdateVersion running);

    /// The installation that the program in the folder `bin` is part of, links resolved.
    [[nodiscard]] static std::variant<Installation, NoInstallation>
    ofProgram(const std::filesystem::path &bin);

    [[nodiscard]] const std::filesystem::path &root() const { return m_root; }

    /// The version of the program that asks; another one may have become current since it started.
    [[nodiscard]] const UpdateVersion &running() const { return m_running; }

    /// The versions that the links lead to; no version when a link is missing or leads elsewhere.
    [[nodiscard]] UpdateVersion current() const;
    [[nodiscard]] UpdateVersion previous() const;

    /// Whether the current version has not yet started well.
    [[nodiscard]] bool isOnTrial() const;

    /// Whether what a version is started with is in the folder `version`.
    [[nodiscard]] static bool hasPrograms(const std::filesystem::path &version);

    /// What starts the current version, whichever that is by then: "<root>/current/bin/orvanebreak".
    [[nodiscard]] std::filesystem::path launcher() const;

    /// The folder of the versions, and of what becomes one.
    [[nodiscard]] std::filesystem::path versionsFolder() const;

    /// The folder of one version, whether it is there or not.
    [[nodiscard]] std::filesystem::path folderOf(const UpdateVersion &version) const;

private:
    [[nodiscard]] UpdateVersion linkedVersion(const char *link) const;

    std::filesystem::path m_root;
    UpdateVersion m_running;
};
