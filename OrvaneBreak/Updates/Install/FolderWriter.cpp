// SPDX-License-Identifier: GPL-3.0-or-later
#include "FolderWriter.h"

#include "FileCalls.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <utility>

namespace {

constexpr mode_t programMode = S_IRWXU | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH;
constexpr mode_t contentMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;

FileDescriptor openFolderAt(int parent, const char *name)
{
    return FileDescriptor(
        uninterrupted([&] { return openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
}

/// Opens the folder `name` in `parent`, creating it if necessary.
FileDescriptor makeFolderAt(int parent, const char *name)
{
    const bool isNew = mkdirat(parent, name, S_IRWXU) == 0;
    if (!isNew && errno != EEXIST)
        return {};
    FileDescriptor folder = openFolderAt(parent, name);
    if (isNew && folder.isOpen() && fchmod(folder.get(), programMode) != 0)
        return {};
    return folder;
}

} // namespace

FolderWriter::FolderWriter(const std::filesystem::path &folder)
{
    if (mkdir(folder.c_str(), S_IRWXU) != 0)
        return;
    m_folder = openFolderAt(AT_FDCWD, folder.c_str());
    if (!m_folder.isOpen())
        rmdir(folder.c_str());
}

FileDescriptor FolderWriter::openFolder(const std::vector<std::string> &names) const
{
    FileDescriptor folder = openFolderAt(m_folder.get(), ".");
    for (const std::string &name : names) {
        if (!folder.isOpen())
            break;
        folder = makeFolderAt(folder.get(), name.c_str());
    }
    return folder;
}

FileDescriptor FolderWriter::openParent(std::vector<std::string> names) const
{
    names.pop_back();
    return openFolder(names);
}

bool FolderWriter::makeFolder(const std::vector<std::string> &names) const
{
    return openFolder(names).isOpen();
}

bool FolderWriter::makeFile(const std::vector<std::string> &names, bool isExecutable,
                            const std::function<bool(int)> &fill) const
{
    const FileDescriptor parent = openParent(names);
    if (!parent.isOpen())
        return false;
    const FileDescriptor file(uninterrupted([&] {
        return openat(parent.get(), names.back().c_str(),
                      O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    }));
    return file.isOpen() && fill(file.get()) &&
           fchmod(file.get(), isExecutable ? programMode : contentMode) == 0 && syncToDisk(file.get());
}

bool FolderWriter::makeLink(const std::vector<std::string> &names, const std::string &target) const
{
    const FileDescriptor parent = openParent(names);
    return parent.isOpen() && symlinkat(target.c_str(), parent.get(), names.back().c_str()) == 0;
}

bool FolderWriter::syncFolder(const std::vector<std::string> &names) const
{
    const FileDescriptor folder = openFolder(names);
    return folder.isOpen() && syncToDisk(folder.get());
}
