// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"
#include "Installation.h"

#include <QString>

#include <filesystem>
#include <optional>
#include <string>

/// The exclusive right to change an installation, as long as the object lives; a process that dies loses it.
/// Whatever happens between two steps, "current" leads to a whole version. The steps return nothing when they
/// succeeded, otherwise a line for the log that says why not; the current version is the same as before then.
/// Any thread, one at a time.
class InstallationChange
{
public:
    /// Takes the right without waiting, and removes what a process left behind that was killed in the middle.
    /// Absent when somebody else has it, or the installation cannot be changed.
    [[nodiscard]] static std::optional<InstallationChange> begin(const Installation &installation);

    /// The path of a folder to unpack an update into; there is nothing yet.
    [[nodiscard]] std::filesystem::path newStagingFolder() const;

    /// Makes `unpacked`, a folder in a staging folder, the version `version`, which must be neither current
    /// nor running. One of the same name that is there is replaced. The staging folder is gone then.
    [[nodiscard]] std::optional<QString> stage(const std::filesystem::path &unpacked,
                                               const UpdateVersion &version);

    /// Makes `version` current and on trial, and what was current the previous one.
    [[nodiscard]] std::optional<QString> activate(const UpdateVersion &version);

    /// The running version has started well: ends its trial and removes every version that is neither
    /// current nor previous. Does nothing when the running version is not the current one.
    [[nodiscard]] std::optional<QString> confirm();

private:
    explicit InstallationChange(const Installation &installation);

    [[nodiscard]] bool placeLink(const char *name, const UpdateVersion &version) const;
    [[nodiscard]] bool placeTrial(const UpdateVersion &version) const;
    [[nodiscard]] bool activateSteps(const UpdateVersion &before, const UpdateVersion &version) const;
    [[nodiscard]] bool endTrial() const;
    [[nodiscard]] bool discardVersion(const std::string &name) const;
    void removeLeftovers() const;
    void removeTemporaryNames() const;

    Installation m_installation;
    FileDescriptor m_root;
    FileDescriptor m_versions;
    FileDescriptor m_lock;
};
