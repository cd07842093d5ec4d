// SPDX-License-Identifier: GPL-3.0-or-later
#include "UnixSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <utility>

namespace {

constexpr int handledSignals[] = {SIGTERM, SIGINT, SIGHUP};

/// The end of the pipe that the handler writes to.
std::atomic<int> wakeUpDescriptor = -1;

void handleSignal(int /*number*/)
{
    const int savedError = errno;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(wakeUpDescriptor, &byte, 1);
    errno = savedError;
}

void setHandler(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    for (const int number : handledSignals)
        sigaction(number, &action, nullptr);
}

} // namespace

UnixSignals::Pipe::Pipe()
    : ends{-1, -1}
{
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        qFatal("pipe2 failed");
}

UnixSignals::Pipe::~Pipe()
{
    close(ends[0]);
    close(ends[1]);
}

UnixSignals::UnixSignals(std::function<void()> onTerminate)
    : m_notifier(m_pipe.ends[0], QSocketNotifier::Read)
{
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier,
                     [this, action = std::move(onTerminate)] {
                         m_notifier.setEnabled(false);
                         action();
                     });
    wakeUpDescriptor = m_pipe.ends[1];
    setHandler(handleSignal);
    std::signal(SIGXFSZ, SIG_IGN);
}

UnixSignals::~UnixSignals()
{
    setHandler(SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);
    wakeUpDescriptor = -1;
}
