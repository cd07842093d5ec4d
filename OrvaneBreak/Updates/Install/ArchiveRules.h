// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdateVersion.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How large an update may be.
struct UnpackLimits
{
    std::size_t entries = 5'000; ///< Files, links and folders together.
    qint64 totalBytes = 500LL * 1024 * 1024;
    qint64 entryBytes = 250LL * 1024 * 1024;
    std::size_t pathLength = 512;
};

/// What is wrong with an archive.
enum class UnpackProblem
{
    Damaged,   ///< No tar archive packed with zstd, or only a part of one.
    TopFolder, ///< Something else than one folder "OrvaneBreak-<version>" is at the top.
    Path,      ///< A path that is absolute, leads upwards or through a link, or has odd characters in it.
    Link,      ///< A link that may lead out of the top folder, or a second name of a file.
    Kind,      ///< A device, a pipe, a socket.
    Mode,      ///< A set-user-id, set-group-id or sticky bit.
    Duplicate, ///< A path that came before.
    TooMany,
    TooLarge,
    Version, ///< share/OrvaneBreak/Info.json tells no version, or another one than the top folder.
    Disk,    ///< The archive may be fine: it cannot be written.
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

/// Judges the entries of an archive one after the other, by what they say. What it admits can be made below
/// an empty folder without anything else being touched, and leads nowhere else afterwards. Any thread.
class ArchiveRules
{
public:
    explicit ArchiveRules(const UnpackLimits &limits)
        : m_limits(limits)
    {
    }

    /// What is wrong with `entry`, if anything.
    [[nodiscard]] std::optional<UnpackProblem> admit(const ArchiveEntry &entry);

    /// The name of the one folder at the top; empty before the first entry.
    [[nodiscard]] const std::string &topFolder() const { return m_topFolder; }

    /// The version in the name of the top folder.
    [[nodiscard]] QString version() const;

    /// The paths of all folders, outer ones first, with those that are only part of another path.
    [[nodiscard]] std::vector<std::string> folders() const;

    /// Whether the archive has a file at `path`.
    [[nodiscard]] bool hasFile(const std::string &path) const;

    /// The names along `path`, or nothing when it is one to refuse. Folders may end with a slash.
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
