// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ArchiveReader.h"

#include <QString>

#include <filesystem>
#include <variant>

/// A completely unpacked update.
struct UnpackedUpdate
{
    std::filesystem::path folder; ///< The archive's top folder.
    UpdateVersion version;        ///< From its Info.json; always valid.
};

/// Why an archive was not unpacked.
struct UnpackFailure
{
    UnpackProblem problem = UnpackProblem::Damaged;
    QString detail; ///< For the log: the path of the entry, or the system's error message.
};

/// Unpacks the remaining entries of `archive` into `folder`, which must not exist and is created with the
/// mode 0700. On success everything is synced to the disk, with the modes 0755 and 0644; on failure `folder`
/// is removed. Safe for any archive, but the caller verifies the signature first, of the same bytes in
/// memory: a file could have changed since. Blocks while it writes; any thread.
[[nodiscard]] std::variant<UnpackedUpdate, UnpackFailure>
unpackArchive(ArchiveReader &&archive, const std::filesystem::path &folder, const UnpackLimits &limits = {});
