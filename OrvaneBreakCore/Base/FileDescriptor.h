// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <unistd.h>

#include <utility>

/// Owns one file descriptor and closes it on destruction. Any thread, one at a time.
class FileDescriptor
{
public:
    FileDescriptor() = default;

    /// Takes ownership of `value`, the result of open() or a similar call; a negative one is no descriptor.
    explicit FileDescriptor(int value)
        : m_value(value)
    {
    }

    FileDescriptor(FileDescriptor &&other) noexcept
        : m_value(std::exchange(other.m_value, -1))
    {
    }

    FileDescriptor &operator=(FileDescriptor &&other) noexcept
    {
        std::swap(m_value, other.m_value);
        return *this;
    }

    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;

    ~FileDescriptor()
    {
        if (isOpen())
            close(m_value);
    }

    [[nodiscard]] int get() const { return m_value; }
    [[nodiscard]] bool isOpen() const { return m_value >= 0; }

private:
    int m_value = -1;
};
