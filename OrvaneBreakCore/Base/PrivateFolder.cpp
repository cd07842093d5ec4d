// SPDX-License-Identifier: GPL-3.0-or-later
#include "PrivateFolder.h"

#include "FileCalls.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

FileDescriptor openFolder(const std::filesystem::path &folder)
{
    return FileDescriptor(
        uninterrupted([&] { return open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK); }));
}

void createPrivateFolder(const std::filesystem::path &folder)
{
    if (mkdir(folder.c_str(), S_IRWXU) != 0) {
        if (errno != ENOENT || !folder.has_relative_path())
            return;
        createPrivateFolder(folder.parent_path());
        if (mkdir(folder.c_str(), S_IRWXU) != 0)
            return;
    }
    const FileDescriptor parent = openFolder(folder.parent_path());
    if (parent.isOpen())
        fsync(parent.get());
}
