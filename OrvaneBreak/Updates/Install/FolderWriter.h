// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <QByteArrayView>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// Makes folders, files and links below one folder that it makes itself. It goes through no link and
/// overwrites nothing. Every function returns false, with errno set, when it failed. Any thread, one at a
/// time.
class FolderWriter
{
public:
    /// Makes `folder`, for the user alone; isOpen() is false when that failed or something was there.
    explicit FolderWriter(const std::filesystem::path &folder);

    [[nodiscard]] bool isOpen() const { return m_folder.isOpen(); }

    /// Makes the folder whose names from the outside to the inside are `names`, with what is missing above
    /// it. Its mode is 0755; one that is there stays.
    [[nodiscard]] bool makeFolder(const std::vector<std::string> &names) const;

    /// Makes a file with the mode 0755 or 0644. `fill` gets its descriptor and returns whether to keep it.
    /// It is on the disk when this returns true.
    [[nodiscard]] bool makeFile(const std::vector<std::string> &names, bool isExecutable,
                                const std::function<bool(int)> &fill) const;

    /// Makes a symbolic link to `target`.
    [[nodiscard]] bool makeLink(const std::vector<std::string> &names, const std::string &target) const;

    /// Puts the names in the folder `names` onto the disk; no names stand for the outermost one.
    [[nodiscard]] bool syncFolder(const std::vector<std::string> &names) const;

private:
    [[nodiscard]] FileDescriptor openFolder(const std::vector<std::string> &names) const;
    [[nodiscard]] FileDescriptor openParent(std::vector<std::string> names) const;

    FileDescriptor m_folder;
};
