// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>

/// Preloaded, this steps the clocks of a process. The file named by ORVANE_TEST_CLOCK holds two numbers of
/// seconds: how far the wall clock is set forward, and how long the machine was asleep. At SIGUSR2 the
/// process reads them again; its timers on the wall clock then fire when the stepped clock says so, as after
/// a resume.

#define REPLACED extern "C" __attribute__((visibility("default")))

namespace {

std::atomic<std::int64_t> setForward = 0;
std::atomic<std::int64_t> asleep = 0;

/// The process has one timer on the wall clock.
std::atomic<int> timerDescriptor = -1;
std::atomic<int> timerFlags = 0;
itimerspec timerValue{};

int armStepped()
{
    itimerspec value = timerValue;
    if (value.it_value.tv_sec != 0 || value.it_value.tv_nsec != 0) {
        // All zeros would disarm the timer.
        value.it_value.tv_sec = std::max<time_t>(value.it_value.tv_sec - setForward - asleep, 1);
    }
    return static_cast<int>(
        syscall(SYS_timerfd_settime, timerDescriptor.load(), timerFlags.load(), &value, nullptr));
}

/// Uses only functions that a signal handler may call.
void readSteps()
{
    const char *path = std::getenv("ORVANE_TEST_CLOCK");
    char text[64] = {};
    const int file = path ? open(path, O_RDONLY | O_CLOEXEC) : -1;
    if (file < 0)
        return;
    const ssize_t length = read(file, text, sizeof text - 1);
    close(file);
    std::int64_t numbers[2] = {};
    int index = 0;
    for (ssize_t place = 0; place < length && index < 2; ++place) {
        if (text[place] >= '0' && text[place] <= '9')
            numbers[index] = numbers[index] * 10 + (text[place] - '0');
        else
            ++index;
    }
    setForward = numbers[0];
    asleep = numbers[1];
}

void stepped(int)
{
    readSteps();
    if (timerDescriptor >= 0)
        armStepped();
}

__attribute__((constructor)) void prepare()
{
    readSteps();
    struct sigaction action = {};
    action.sa_handler = stepped;
    action.sa_flags = SA_RESTART;
    sigaction(SIGUSR2, &action, nullptr);
}

} // namespace

REPLACED int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    const auto status = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    if (status != 0)
        return status;
    if (clock == CLOCK_REALTIME)
        time->tv_sec += setForward + asleep;
    else if (clock == CLOCK_BOOTTIME)
        time->tv_sec += asleep;
    return 0;
}

REPLACED int timerfd_create(int clock, int flags) noexcept
{
    const auto descriptor = static_cast<int>(syscall(SYS_timerfd_create, clock, flags));
    if (clock == CLOCK_REALTIME)
        timerDescriptor = descriptor;
    return descriptor;
}

REPLACED int timerfd_settime(int descriptor, int flags, const itimerspec *value, itimerspec *old) noexcept
{
    if (descriptor != timerDescriptor)
        return static_cast<int>(syscall(SYS_timerfd_settime, descriptor, flags, value, old));
    timerFlags = flags;
    timerValue = *value;
    return armStepped();
}
