// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdateVersion.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Limits on the size of an update.
struct UnpackLimits
{
    std::size_t entries = 5'000; ///< Files, links and folders together.
    qint64 totalBytes = 500LL * 1024 * 1024;
    qint64 entryBytes = 250LL * 1024 * 1024;
    std::size_t pathLength = 512;
};

/// Why an archive cannot be unpacked.
enum class UnpackProblem
{
    Damaged,   ///< Not a tar archive compressed with zstd, or truncated.
    TopFolder, ///< The top level is not exactly one folder "OrvaneBreak-<version>".
    Path,      ///< Absolute, with "..", through a link, too long, or with characters outside printable ASCII.
    Link,      ///< A symbolic link that may lead out of the top folder, or a hard link.
    Kind,      ///< A device, pipe or socket.
    Mode,      ///< A set-user-id, set-group-id or sticky bit.
    Duplicate, ///< The same path twice.
    TooMany,
    TooLarge,
    Version, ///< The version in share/OrvaneBreak/Info.json is missing or not that of the top folder.
    Disk,    ///< The disk cannot be written; the archive may be valid.
};

/// One entry of an archive. Sizes in bytes.
struct ArchiveEntry
{
    enum class Kind
    {
        Folder,
        File,
        Link
    };

    Kind kind = Kind::File;
    std::string path;
    std::string target; ///< Of a link.
    qint64 size = 0;
    bool isExecutable = false;
};

/// Checks the entries of an archive one by one. Admitted entries can be created below an empty folder without
/// touching anything outside, and no link among them leads out of it. Any thread.
class ArchiveRules
{
public:
    explicit ArchiveRules(const UnpackLimits &limits)
        : m_limits(limits)
    {
    }

    /// The problem with `entry`; absent when it may be unpacked.
    [[nodiscard]] std::optional<UnpackProblem> admit(const ArchiveEntry &entry);

    /// The name of the top folder; empty before the first entry.
    [[nodiscard]] const std::string &topFolder() const { return m_topFolder; }

    /// The version in the name of the top folder.
    [[nodiscard]] QString version() const;

    /// The paths of all folders, outer ones first, including those that have no entry of their own.
    [[nodiscard]] std::vector<std::string> folders() const;

    /// Whether a file was admitted at `path`.
    [[nodiscard]] bool hasFile(const std::string &path) const;

    /// The components of `path`, which may end with a slash; absent when it is not admissible.
    [[nodiscard]] static std::optional<std::vector<std::string>> split(std::string_view path);

private:
    enum class Known
    {
        ImpliedFolder,
        Folder,
        File,
        Link
    };

    std::optional<UnpackProblem> admitTopFolder(const std::vector<std::string> &names,
                                                ArchiveEntry::Kind kind);
    std::optional<UnpackProblem> admitPath(const std::vector<std::string> &names, ArchiveEntry::Kind kind);

    UnpackLimits m_limits;
    std::string m_topFolder;
    std::map<std::string, Known> m_known;
    qint64 m_totalBytes = 0;
};
