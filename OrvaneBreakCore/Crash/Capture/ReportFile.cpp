// SPDX-License-Identifier: GPL-3.0-or-later
#include "ReportFile.h"

#include "FileCalls.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <cstdio>

namespace {

constexpr std::string_view separator = "\n---\n";

timespec now()
{
    timespec time = {};
    clock_gettime(CLOCK_REALTIME, &time);
    return time;
}

std::chrono::nanoseconds sinceEpoch(const timespec &time)
{
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

ReportFile::ReportFile(const std::filesystem::path &path)
    : m_start(now())
    , m_path(path.string())
    , m_temporary(m_path + ".new")
    , m_reserve(open("/dev/null", O_RDONLY | O_CLOEXEC))
{
    for (auto folder = path.parent_path(); folder.has_relative_path(); folder = folder.parent_path())
        m_folders.insert(m_folders.begin(), folder.string());
    createFolders();
}

void ReportFile::createFolders() const
{
    for (const std::string &folder : m_folders)
        mkdir(folder.c_str(), S_IRWXU);
}

FileDescriptor ReportFile::createTemporary() const
{
    return FileDescriptor(
        open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
}

void ReportFile::write(std::string_view message, std::string_view stack)
{
    // With a file size limit, SIGXFSZ would end the process.
    std::signal(SIGXFSZ, SIG_IGN);
    m_reserve = FileDescriptor();
    unlink(m_temporary.c_str());
    FileDescriptor file = createTemporary();
    if (!file.isOpen() && errno == ENOENT) {
        createFolders();
        file = createTemporary();
    }
    if (!file.isOpen())
        return;
    const bool isWhole =
        writeBytes(file.get(), message) && writeBytes(file.get(), separator) && writeBytes(file.get(), stack);
    // The time of the last access is when the process started.
    const timespec times[2] = {m_start, now()};
    futimens(file.get(), times);
    if (!isWhole || rename(m_temporary.c_str(), m_path.c_str()) != 0)
        unlink(m_temporary.c_str());
}

std::optional<std::chrono::nanoseconds> ReportFile::lifetime(const std::filesystem::path &path)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0)
        return std::nullopt;
    const std::chrono::nanoseconds lifetime = sinceEpoch(status.st_mtim) - sinceEpoch(status.st_atim);
    return lifetime.count() >= 0 ? std::optional(lifetime) : std::nullopt;
}
