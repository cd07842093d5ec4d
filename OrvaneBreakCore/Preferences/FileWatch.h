// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// Detects that any program wrote, replaced, removed or created one file. Nothing runs between the queries:
/// inotify collects the changes of the folder, and a query reads them without disk access. While the folder
/// cannot be watched, because it does not exist or a kernel limit is reached, each query compares the file's
/// attributes and tries to watch again. One thread.
class FileWatch
{
public:
    /// Follows symbolic links in place of `file`, and watches each folder on the way.
    explicit FileWatch(std::filesystem::path file);

    /// Whether the file may have changed since the last query; true for the first one. Ignores the rename of
    /// the file `ownTemporaryName` to the watched one.
    [[nodiscard]] bool mayHaveChanged(const std::string &ownTemporaryName = {});

    /// Watches the folders that the path leads to now, because inotify does not report that the parent of a
    /// folder moved. Returns true when the watch is new, so that the file may have changed.
    bool follow();

    /// `file`, followed by the target of each symbolic link in turn. The last path is not a link, unless the
    /// links form a loop.
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
