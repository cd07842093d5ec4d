// SPDX-License-Identifier: GPL-3.0-or-later
#include "TimerfdRunLoop.h"

#include "TimerSchedule.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

using namespace std::chrono_literals;

namespace {

int createDescriptor()
{
    const int descriptor = timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC);
    if (descriptor < 0)
        qFatal("timerfd_create failed: %s", qPrintable(qt_error_string(errno)));
    return descriptor;
}

itimerspec specification(std::optional<Date> wakeUp)
{
    itimerspec specification{};
    if (!wakeUp)
        return specification;
    // All zeros would disarm the timer. A date in the past fires at once.
    const Interval sinceEpoch = std::max(wakeUp->time_since_epoch(), Interval(1));
    const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
    specification.it_value.tv_sec = static_cast<time_t>(seconds.count());
    specification.it_value.tv_nsec =
        static_cast<long>(std::chrono::nanoseconds(sinceEpoch - seconds).count());
    return specification;
}

} // namespace

TimerfdRunLoop::TimerfdRunLoop(std::function<Date()> clock)
    : m_clock(std::move(clock))
    , m_descriptor(createDescriptor())
    , m_notifier(m_descriptor, QSocketNotifier::Read)
{
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { descriptorReadable(); });
}

TimerfdRunLoop::~TimerfdRunLoop()
{
    m_notifier.setEnabled(false);
    close(m_descriptor);
}

Date TimerfdRunLoop::systemNow()
{
    return std::chrono::floor<Interval>(std::chrono::system_clock::now());
}

void TimerfdRunLoop::clockWasSet()
{
    if (onWakeUp)
        onWakeUp();
    schedule().clockChanged(now());
    schedule().fireDue(now());
    m_armed.reset();
    scheduleChanged();
}

void TimerfdRunLoop::scheduleChanged()
{
    const std::optional<Date> wakeUp = schedule().nextWakeUp();
    if (wakeUp != m_armed)
        arm(wakeUp);
}

void TimerfdRunLoop::descriptorReadable()
{
    std::uint64_t expirations = 0;
    const ssize_t length = read(m_descriptor, &expirations, sizeof expirations);
    if (length < 0 && errno == ECANCELED) {
        clockWasSet();
        return;
    }
    if (length < 0)
        return;
    m_armed.reset();
    if (onWakeUp)
        onWakeUp();
    schedule().fireDue(now());
    scheduleChanged();
}

void TimerfdRunLoop::arm(std::optional<Date> wakeUp)
{
    m_armed = wakeUp;
    const itimerspec value = specification(wakeUp);
    const int status =
        timerfd_settime(m_descriptor, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &value, nullptr);
    // If the clock was set since the last read, the kernel arms the timer and reports the change only here,
    // once. The timers' actions must not run inside the call that schedules a timer.
    if (status < 0 && errno == ECANCELED)
        QMetaObject::invokeMethod(&m_notifier, [this] { clockWasSet(); }, Qt::QueuedConnection);
}
