// SPDX-License-Identifier: GPL-3.0-or-later
#include "SystemCalls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

// The replacements are visible to all libraries and keep the C library's signatures.
#define REPLACED extern "C" __attribute__((visibility("default")))

namespace {

enum class Mode
{
    Idle,
    Kill,
    Full,
    Broken
};

Mode mode = Mode::Idle;
int limit = 0;
int failuresLeft = 0;
int calls = 0;

enum class Need
{
    Nothing,
    Space
};

/// Counts a call. Returns false and sets errno if the call must fail.
bool isAllowed(Need need)
{
    if (mode == Mode::Idle || (mode == Mode::Full && need == Need::Nothing))
        return true;
    ++calls;
    if (mode == Mode::Kill) {
        if (calls == limit)
            _exit(SystemCalls::killedStatus);
        return true;
    }
    if (calls < limit || failuresLeft == 0)
        return true;
    --failuresLeft;
    errno = mode == Mode::Full ? ENOSPC : EIO;
    return false;
}

template <typename... Arguments>
int called(Need need, long number, Arguments... arguments)
{
    return isAllowed(need) ? static_cast<int>(syscall(number, arguments...)) : -1;
}

void start(Mode chosen, int call, int failures)
{
    mode = chosen;
    failuresLeft = failures;
    limit = call;
    calls = 0;
}

} // namespace

void SystemCalls::killBefore(int call)
{
    start(Mode::Kill, call, 1);
}

void SystemCalls::fillDiskBefore(int call, int failures)
{
    start(Mode::Full, call, failures);
}

void SystemCalls::breakDiskBefore(int call, int failures)
{
    start(Mode::Broken, call, failures);
}

int SystemCalls::count()
{
    return calls;
}

REPLACED int mkdir(const char *path, mode_t permissions) noexcept
{
    return called(Need::Space, SYS_mkdirat, AT_FDCWD, path, permissions);
}

REPLACED int mkdirat(int folder, const char *path, mode_t permissions) noexcept
{
    return called(Need::Space, SYS_mkdirat, folder, path, permissions);
}

REPLACED int openat(int folder, const char *path, int flags, ...)
{
    mode_t permissions = 0;
    if ((flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        permissions = va_arg(arguments, mode_t);
        va_end(arguments);
        return called(Need::Space, SYS_openat, folder, path, flags, permissions);
    }
    // Killing a process before it opens a file to read changes nothing on the disk.
    return mode == Mode::Kill ? static_cast<int>(syscall(SYS_openat, folder, path, flags, permissions))
                              : called(Need::Nothing, SYS_openat, folder, path, flags, permissions);
}

REPLACED ssize_t write(int file, const void *bytes, size_t length)
{
    return isAllowed(Need::Space) ? syscall(SYS_write, file, bytes, length) : -1;
}

REPLACED ssize_t read(int file, void *bytes, size_t length)
{
    return mode == Mode::Kill || isAllowed(Need::Nothing) ? syscall(SYS_read, file, bytes, length) : -1;
}

REPLACED ssize_t pread(int file, void *bytes, size_t length, off_t offset)
{
    return isAllowed(Need::Nothing) ? syscall(SYS_pread64, file, bytes, length, offset) : -1;
}

REPLACED int ftruncate(int file, off_t length) noexcept
{
    return called(Need::Nothing, SYS_ftruncate, file, length);
}

REPLACED int fsync(int file)
{
    // A killed process loses no writes without it, and waiting for the disk would take most of the test.
    return isAllowed(Need::Space) && fcntl(file, F_GETFD) >= 0 ? 0 : -1;
}

REPLACED int fchmod(int file, mode_t permissions) noexcept
{
    return called(Need::Nothing, SYS_fchmod, file, permissions);
}

REPLACED int symlinkat(const char *target, int folder, const char *path) noexcept
{
    return called(Need::Space, SYS_symlinkat, target, folder, path);
}

REPLACED int renameat(int oldFolder, const char *oldPath, int newFolder, const char *newPath) noexcept
{
    return called(Need::Space, SYS_renameat2, oldFolder, oldPath, newFolder, newPath, 0U);
}

REPLACED int renameat2(int oldFolder, const char *oldPath, int newFolder, const char *newPath,
                       unsigned flags) noexcept
{
    return called(Need::Space, SYS_renameat2, oldFolder, oldPath, newFolder, newPath, flags);
}

REPLACED int linkat(int oldFolder, const char *oldPath, int newFolder, const char *newPath,
                    int flags) noexcept
{
    return called(Need::Space, SYS_linkat, oldFolder, oldPath, newFolder, newPath, flags);
}

REPLACED int unlinkat(int folder, const char *path, int flags) noexcept
{
    return called(Need::Nothing, SYS_unlinkat, folder, path, flags);
}

REPLACED int unlink(const char *path) noexcept
{
    return called(Need::Nothing, SYS_unlinkat, AT_FDCWD, path, 0);
}

REPLACED int rmdir(const char *path) noexcept
{
    return called(Need::Nothing, SYS_unlinkat, AT_FDCWD, path, AT_REMOVEDIR);
}

REPLACED int remove(const char *path) noexcept
{
    const int result = called(Need::Nothing, SYS_unlinkat, AT_FDCWD, path, 0);
    return result != 0 && errno == EISDIR ? rmdir(path) : result;
}
