// SPDX-License-Identifier: GPL-3.0-or-later
#include "PartialFile.h"

#include "FileCalls.h"
#include "PrivateFolder.h"

#include <QByteArray>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <system_error>
#include <utility>
#include <vector>

namespace {

constexpr auto extension = ".part";
constexpr mode_t privateMode = S_IRUSR | S_IWUSR;

FileDescriptor openPrivateFolder(const std::filesystem::path &path)
{
    createPrivateFolder(path);
    FileDescriptor folder(uninterrupted(
        [&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK); }));
    struct stat status = {};
    if (!folder.isOpen() || fstat(folder.get(), &status) != 0 || status.st_uid != geteuid() ||
        fchmod(folder.get(), S_IRWXU) != 0)
        return {};
    return folder;
}

/// Rejects a file with a second hard link, which may be somebody else's file.
bool isOwnFile(int file)
{
    struct stat status = {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
           status.st_nlink == 1;
}

FileDescriptor openAt(const FileDescriptor &folder, const std::string &name, int flags)
{
    return FileDescriptor(uninterrupted([&] {
        return openat(folder.get(), name.c_str(),
                      O_RDWR | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | flags,
                      privateMode);
    }));
}

} // namespace

std::optional<PartialFile> PartialFile::open(const std::filesystem::path &folder, const std::string &name)
{
    PartialFile file(openPrivateFolder(folder), name + extension);
    if (!file.m_folder.isOpen() || !file.openFile())
        return std::nullopt;
    file.removeOthers();
    return file;
}

PartialFile::PartialFile(FileDescriptor folder, std::string name)
    : m_folder(std::move(folder))
    , m_name(std::move(name))
{
}

bool PartialFile::openFile()
{
    // Opening a device can have side effects, so the type is checked first.
    struct stat status = {};
    if (fstatat(m_folder.get(), m_name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode))
        m_file = openAt(m_folder, m_name, 0);
    if (!m_file.isOpen() || !isOwnFile(m_file.get())) {
        remove();
        m_file = openAt(m_folder, m_name, O_CREAT | O_EXCL);
    }
    return m_file.isOpen() && fchmod(m_file.get(), privateMode) == 0 &&
           flock(m_file.get(), LOCK_EX | LOCK_NB) == 0;
}

void PartialFile::removeOthers() const
{
    const std::filesystem::path folder("/proc/self/fd/" + std::to_string(m_folder.get()));
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error); !error && entry != end(entry);
         entry.increment(error)) {
        if (entry->path().extension() == extension && entry->path().filename() != m_name)
            names.push_back(entry->path().filename());
    }
    for (const std::string &name : names)
        unlinkat(m_folder.get(), name.c_str(), 0);
}

qint64 PartialFile::size() const
{
    struct stat status = {};
    return fstat(m_file.get(), &status) == 0 ? status.st_size : 0;
}

bool PartialFile::append(QByteArrayView bytes) const
{
    return writeBytes(m_file.get(), bytes);
}

bool PartialFile::clear() const
{
    return uninterrupted([this] { return ftruncate(m_file.get(), 0); }) == 0;
}

std::optional<QByteArray> PartialFile::read(qint64 length) const
{
    if (size() != length)
        return std::nullopt;
    QByteArray bytes(length, Qt::Uninitialized);
    for (qint64 position = 0; position < length;) {
        const ssize_t count = uninterrupted([&] {
            return pread(m_file.get(), bytes.data() + position, static_cast<std::size_t>(length - position),
                         position);
        });
        if (count <= 0)
            return std::nullopt;
        position += count;
    }
    return bytes;
}

void PartialFile::remove() const
{
    unlinkat(m_folder.get(), m_name.c_str(), 0);
}
