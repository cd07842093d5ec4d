// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"
#include "Installation.h"

#include <QString>

#include <filesystem>
#include <optional>
#include <string>

/// An exclusive lock on an installation, and the steps that change it. The lock is released with the object
/// or when the process dies. Wherever a step is interrupted, "current" leads to a complete version. A step
/// that fails returns a line for the log and leaves the current version unchanged. Any thread, one at a time.
class InstallationChange
{
public:
    /// Takes the lock without waiting, and removes the temporary files of a process that was killed. Absent
    /// when another process has the lock or the installation cannot be changed.
    [[nodiscard]] static std::optional<InstallationChange> begin(const Installation &installation);

    /// A new path to unpack an update into; does not create it.
    [[nodiscard]] std::filesystem::path newStagingFolder() const;

    /// Moves `unpacked`, a folder in a staging folder, into place as `version`, and removes the staging
    /// folder. Replaces a folder of that version, which must be newer than the current and running ones.
    [[nodiscard]] std::optional<QString> stage(const std::filesystem::path &unpacked,
                                               const UpdateVersion &version);

    /// Makes `version`, which must be newer than the current one, current and puts it on trial. The current
    /// version becomes the previous one, unless it is on trial itself. Does nothing when it is current.
    [[nodiscard]] std::optional<QString> activate(const UpdateVersion &version);

    /// Takes back the last start of the current version, if it is on trial: it ended for a reason that says
    /// nothing about the version.
    [[nodiscard]] std::optional<QString> takeBackStart();

    /// Removes the version that the launcher gave up, unless it is running.
    [[nodiscard]] std::optional<QString> forgetFailure();

    /// Ends the trial of the running version and removes every version that is neither current nor previous.
    /// Does nothing when the running version is not current.
    [[nodiscard]] std::optional<QString> confirm();

private:
    explicit InstallationChange(const Installation &installation);

    [[nodiscard]] bool placeLink(const char *name, const UpdateVersion &version) const;
    [[nodiscard]] bool placeTrial(const Installation::Trial &trial) const;
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
