// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <QByteArrayView>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// Creates folders, files and links below a new folder. Follows no link and overwrites nothing. A path is
/// given as its components below that folder. Every function returns false, with errno set, on failure. Any
/// thread, one at a time.
class FolderWriter
{
public:
    /// Creates `folder` with the mode 0700; isOpen() is false when that failed or `folder` existed.
    explicit FolderWriter(const std::filesystem::path &folder);

    [[nodiscard]] bool isOpen() const { return m_folder.isOpen(); }

    /// Creates a folder and its missing parents with the mode 0755; an existing one stays as it is.
    [[nodiscard]] bool makeFolder(const std::vector<std::string> &names) const;

    /// Creates a file with the mode 0755 or 0644 and syncs it to the disk. `fill` writes to its descriptor
    /// and returns false on failure.
    [[nodiscard]] bool makeFile(const std::vector<std::string> &names, bool isExecutable,
                                const std::function<bool(int)> &fill) const;

    [[nodiscard]] bool makeLink(const std::vector<std::string> &names, const std::string &target) const;

    /// Syncs the entries of a folder to the disk; without components, those of the new folder itself.
    [[nodiscard]] bool syncFolder(const std::vector<std::string> &names) const;

private:
    [[nodiscard]] FileDescriptor openFolder(const std::vector<std::string> &names) const;
    [[nodiscard]] FileDescriptor openParent(std::vector<std::string> names) const;

    FileDescriptor m_folder;
};
