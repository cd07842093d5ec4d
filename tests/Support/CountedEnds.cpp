// SPDX-License-Identifier: GPL-3.0-or-later
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>

// The header lacks its own extern "C".
extern "C" {
#include <gcov.h>
}

// For coverage builds: replaces the C library's functions that end a process without its exit handlers, and
// writes the line counts first.

extern "C" [[noreturn]] __attribute__((visibility("default"))) void _exit(int status)
{
    __gcov_dump();
    for (;;)
        syscall(SYS_exit_group, status);
}

extern "C" [[noreturn]] __attribute__((visibility("default"))) void _Exit(int status)
{
    _exit(status);
}

namespace {

void countBefore(int number)
{
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    if (action.sa_handler == SIG_DFL)
        __gcov_dump();
}

} // namespace

extern "C" __attribute__((visibility("default"))) int raise(int number) noexcept
{
    countBefore(number);
    return static_cast<int>(syscall(SYS_tgkill, getpid(), gettid(), number));
}

extern "C" __attribute__((visibility("default"))) int kill(pid_t process, int number) noexcept
{
    if (process == getpid())
        countBefore(number);
    return static_cast<int>(syscall(SYS_kill, process, number));
}
