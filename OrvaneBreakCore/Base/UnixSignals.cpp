// SPDX-License-Identifier: GPL-3.0-or-later
#include "UnixSignals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <utility>

namespace {

constexpr int handledSignals[] = {SIGTERM, SIGINT, SIGHUP};

/// The event descriptor that the handler writes to.
std::atomic<int> wakeUpDescriptor = -1;

void handleSignal(int /*number*/)
{
    const int savedError = errno;
    const std::uint64_t count = 1;
    [[maybe_unused]] const ssize_t written = write(wakeUpDescriptor, &count, sizeof count);
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

UnixSignals::UnixSignals(std::function<void()> onTerminate)
    : m_wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , m_notifier(m_wakeUp.get(), QSocketNotifier::Read)
{
    if (!m_wakeUp.isOpen())
        qFatal("eventfd failed");
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier,
                     [this, action = std::move(onTerminate)] {
                         m_notifier.setEnabled(false);
                         action();
                     });
    wakeUpDescriptor = m_wakeUp.get();
    setHandler(handleSignal);
    std::signal(SIGXFSZ, SIG_IGN);
}

UnixSignals::~UnixSignals()
{
    setHandler(SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);
    wakeUpDescriptor = -1;
}
