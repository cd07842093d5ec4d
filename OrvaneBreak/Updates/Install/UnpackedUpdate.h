// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ArchiveReader.h"

#include <QString>

#include <filesystem>
#include <variant>

/// An update on the disk, whole.
struct UnpackedUpdate
{
    std::filesystem::path folder; ///< The archive's top folder.
    UpdateVersion version;        ///< What the update says that it is; always valid.
};

/// Why nothing was unpacked.
struct UnpackFailure
{
    UnpackProblem problem = UnpackProblem::Damaged;
    QString detail; ///< For the log: the path of the entry, or what the system says.
};

/// Unpacks what `archive` has still to read into `folder`, which does not exist yet and is made for the user
/// alone. When this returns an update, all of it is on the disk, with the modes 0755 and 0644; otherwise
/// `folder` is gone again. Any bytes may be read, but only those whose signature was verified should be:
/// these very bytes, for a file may have changed since. Takes as long as writing takes; any thread.
[[nodiscard]] std::variant<UnpackedUpdate, UnpackFailure>
unpackArchive(ArchiveReader &&archive, const std::filesystem::path &folder, const UnpackLimits &limits = {});
