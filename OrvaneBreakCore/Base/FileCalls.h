// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>

#include <unistd.h>

#include <cerrno>

/// Repeats a system call that a signal interrupted, and returns what it returned in the end. Any thread.
template <typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// Writes all of `bytes` to the descriptor `file`; false, with errno set, when that failed. Any thread.
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

/// Waits until what was written to the descriptor `file`, of a file or a folder, is on the disk; false, with
/// errno set, when that failed. Any thread.
inline bool syncToDisk(int file)
{
    return uninterrupted([&] { return fsync(file); }) == 0;
}
