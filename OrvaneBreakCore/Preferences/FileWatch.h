// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// Notices that one file was written, replaced, removed or created, by whatever program. Nothing runs between
/// the questions: the kernel collects the changes of the folder (inotify), and a question takes them from
/// there without touching the disk. Where no folder can be watched, because it does not exist or the kernel's
/// limits are reached, every question looks at the file's attributes instead and tries again to watch. One
/// thread.
class FileWatch
{
public:
    /// Symbolic links in place of `file` are followed, and every folder on the way is watched.
    explicit FileWatch(std::filesystem::path file);

    /// Whether the file may have changed since the last question; true the first time. The rename of the file
    /// `ownTemporaryName` over the watched one does not count.
    [[nodiscard]] bool mayHaveChanged(const std::string &ownTemporaryName = {});

    /// Makes sure that the folders the path leads to now are the watched ones, for folders can be moved away
    /// with their parents unnoticed. Returns true when the watch is a new one, so that the file may have
    /// changed.
    bool follow();

    /// `file`, and behind it what each symbolic link leads to: the last one is no link unless the links are
    /// endless.
    [[nodiscard]] static std::vector<std::filesystem::path> linkChain(const std::filesystem::path &file);

private:
    enum class Events
    {
        None,
        FileTouched,
        WatchLost
    };

    struct Watched
    {
        std::filesystem::path file;
        int watch = -1;
        dev_t device = 0;
        ino_t folder = 0;
    };

    struct Attributes
    {
        bool operator==(const Attributes &) const = default;
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = 0;
        std::int64_t modified = 0;
        std::int64_t changed = 0;
    };

    bool establish();
    [[nodiscard]] bool watchChain();
    [[nodiscard]] bool leadsElsewhere() const;
    [[nodiscard]] bool attributesChanged();
    [[nodiscard]] Events takeEvents(const std::string &ownTemporaryName);
    [[nodiscard]] bool isWatched(int watch, const char *name) const;

    std::filesystem::path m_file;
    FileDescriptor m_inotify;
    std::vector<Watched> m_watched;
    std::optional<Attributes> m_attributes;
};
