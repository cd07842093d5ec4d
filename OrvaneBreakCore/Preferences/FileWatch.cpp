// SPDX-License-Identifier: GPL-3.0-or-later
#include "FileWatch.h"

#include "FileCalls.h"

#include <sys/inotify.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

namespace {

/// As many as the kernel follows.
constexpr std::size_t maxLinks = 40;
constexpr int maxEstablishAttempts = 3;
constexpr std::uint32_t watchMask = IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                    IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr std::uint32_t lostMask = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED | IN_Q_OVERFLOW;

std::int64_t nanoseconds(const timespec &time)
{
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

} // namespace

FileWatch::FileWatch(std::filesystem::path file)
    : m_file(std::move(file))
{
}

bool FileWatch::mayHaveChanged(const std::string &ownTemporaryName)
{
    if (!m_inotify.isOpen())
        return establish() || attributesChanged();
    const Events events = takeEvents(ownTemporaryName);
    if (events == Events::WatchLost)
        establish();
    else if (events == Events::FileTouched)
        follow();
    return events != Events::None;
}

bool FileWatch::follow()
{
    return (!m_inotify.isOpen() || leadsElsewhere()) && establish();
}

std::vector<std::filesystem::path> FileWatch::linkChain(const std::filesystem::path &file)
{
    std::vector<std::filesystem::path> chain{file};
    std::error_code error;
    while (chain.size() <= maxLinks) {
        const std::filesystem::path target = std::filesystem::read_symlink(chain.back(), error);
        if (error)
            break;
        chain.push_back(chain.back().parent_path() / target);
    }
    return chain;
}

bool FileWatch::establish()
{
    for (int attempt = 0; attempt < maxEstablishAttempts; ++attempt) {
        if (!watchChain())
            break;
        // A link or folder that was replaced before its watch began causes no event.
        if (!leadsElsewhere()) {
            m_attributes.reset();
            return true;
        }
    }
    m_inotify = FileDescriptor();
    m_watched.clear();
    return false;
}

bool FileWatch::watchChain()
{
    m_inotify = FileDescriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    m_watched.clear();
    if (!m_inotify.isOpen())
        return false;
    for (const std::filesystem::path &file : linkChain(m_file)) {
        const std::filesystem::path folder = file.parent_path();
        struct stat status = {};
        if (stat(folder.c_str(), &status) != 0)
            return false;
        const int watch = inotify_add_watch(m_inotify.get(), folder.c_str(), watchMask);
        if (watch < 0)
            return false;
        m_watched.push_back({file, watch, status.st_dev, status.st_ino});
    }
    return true;
}

bool FileWatch::leadsElsewhere() const
{
    const std::vector<std::filesystem::path> chain = linkChain(m_file);
    return !std::ranges::equal(
        chain, m_watched, [](const std::filesystem::path &file, const Watched &watched) {
            struct stat status = {};
            return file == watched.file && stat(file.parent_path().c_str(), &status) == 0 &&
                   status.st_dev == watched.device && status.st_ino == watched.folder;
        });
}

bool FileWatch::attributesChanged()
{
    struct stat status = {};
    Attributes attributes;
    if (stat(m_file.c_str(), &status) == 0)
        attributes = {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
                      nanoseconds(status.st_ctim)};
    return std::exchange(m_attributes, attributes) != attributes;
}

FileWatch::Events FileWatch::takeEvents(const std::string &ownTemporaryName)
{
    Events result = Events::None;
    std::optional<std::uint32_t> ownRename;
    std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t length =
            uninterrupted([&] { return read(m_inotify.get(), buffer.data(), buffer.size()); });
        if (length <= 0)
            return length < 0 && errno == EAGAIN ? result : Events::WatchLost;
        inotify_event event = {};
        for (std::size_t offset = 0; offset < static_cast<std::size_t>(length);
             offset += sizeof event + event.len) {
            std::memcpy(&event, buffer.data() + offset, sizeof event);
            const char *name = event.len > 0 ? buffer.data() + offset + sizeof event : "";
            if ((event.mask & IN_MOVED_FROM) != 0 && !ownTemporaryName.empty() && name == ownTemporaryName)
                ownRename = event.cookie;
            else if ((event.mask & lostMask) != 0)
                result = Events::WatchLost;
            else if (result == Events::None && isWatched(event.wd, name) &&
                     ((event.mask & IN_MOVED_TO) == 0 || event.cookie != ownRename))
                result = Events::FileTouched;
        }
    }
}

bool FileWatch::isWatched(int watch, const char *name) const
{
    return std::ranges::any_of(m_watched, [&](const Watched &watched) {
        return watched.watch == watch && watched.file.filename() == name;
    });
}
