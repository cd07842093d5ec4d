// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>

#include <unistd.h>

#include <cerrno>

/// Repeats a system call while signals interrupt it (EINTR), and returns its final result. Any thread.
template <typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// Writes all of `bytes` to the descriptor `file`. Returns false on failure, with errno set. Any thread, also
/// in signal handlers.
inline bool writeBytes(int file, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t length =
            uninterrupted([&] { return write(file, bytes.data(), static_cast<std::size_t>(bytes.size())); });
        if (length <= 0)
            return false;
        bytes = bytes.sliced(length);
    }
    return true;
}

/// Flushes the file or folder of the descriptor `file` to the disk. Returns false on failure, with errno set.
/// Any thread.
inline bool syncToDisk(int file)
{
    return uninterrupted([&] { return fsync(file); }) == 0;
}
