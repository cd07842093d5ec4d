// SPDX-License-Identifier: GPL-3.0-or-later
#include "TimerfdRunLoop.h"

#include "Support/TestProgram.h"

#include <QEventLoop>
#include <QTest>

#include <dlfcn.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>

using namespace std::chrono_literals;

namespace {

/// Makes the next call of one of the functions below report that the clock was set.
bool isClockSet = false;
int clockDescriptor = -1;

template <typename Function>
Function *next(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

int reportClockSet()
{
    isClockSet = false;
    errno = ECANCELED;
    return -1;
}

} // namespace

// The kernel arms the timer as well.
extern "C" int timerfd_settime(int descriptor, int flags, const itimerspec *value, itimerspec *old) noexcept
{
    clockDescriptor = descriptor;
    const int status = next<decltype(timerfd_settime)>("timerfd_settime")(descriptor, flags, value, old);
    return isClockSet ? reportClockSet() : status;
}

extern "C" ssize_t read(int descriptor, void *buffer, size_t size)
{
    static auto *const nextRead = next<decltype(read)>("read");
    const ssize_t length = nextRead(descriptor, buffer, size);
    return isClockSet && descriptor == clockDescriptor ? reportClockSet() : length;
}

/// The run loop on the kernel's timer. Only very short waits are real. Tests set a clock of their own.
class TimerfdRunLoopTest : public QObject
{
    Q_OBJECT

    struct Settable
    {
        Interval offset{};
        TimerfdRunLoop runLoop{[this] { return TimerfdRunLoop::systemNow() + offset; }};
    };

    struct TwoTimers : Settable
    {
        int once = 0;
        int repeated = 0;
        Timer oneShot = runLoop.scheduleOnce(runLoop.now() + 1ms, 0s, [this] { ++once; });
        Timer repeating = runLoop.scheduleRepeating(1ms, 0s, [this] { ++repeated; });
    };

private Q_SLOTS:
    void aDateInThePastFiresFromTheEventLoopAndNotBefore()
    {
        TimerfdRunLoop runLoop;
        int calls = 0;
        const Timer timer = runLoop.scheduleOnce(Date{}, 0s, [&] { ++calls; });
        QCOMPARE(calls, 0);
        QTRY_COMPARE(calls, 1);
    }

    void neverBeforeItsDate()
    {
        TimerfdRunLoop runLoop;
        const Date due = runLoop.now() + 20ms;
        Date fired;
        const Timer timer = runLoop.scheduleOnce(due, 0s, [&] { fired = runLoop.now(); });
        QTRY_VERIFY(fired != Date());
        QVERIFY(fired >= due);
    }

    void repeatingUntilCancelled()
    {
        TimerfdRunLoop runLoop;
        int calls = 0;
        Timer timer;
        timer = runLoop.scheduleRepeating(1ms, 0s, [&] {
            if (++calls == 5)
                timer.invalidate();
        });
        int other = 0;
        const Timer later = runLoop.scheduleRepeating(1ms, 0s, [&] { ++other; });
        QTRY_VERIFY(other > 20);
        QCOMPARE(calls, 5);
    }

    void firesInANestedEventLoop()
    {
        TimerfdRunLoop runLoop;
        QEventLoop nested;
        const Timer timer = runLoop.scheduleOnce(runLoop.now() + 1ms, 0s, [&] { nested.quit(); });
        nested.exec();
    }

    void clockSetForwardFiresWhatHasBecomeDue()
    {
        Settable f;
        int calls = 0;
        const Timer timer = f.runLoop.scheduleOnce(f.runLoop.now() + 20min, 10s, [&] { ++calls; });
        f.runLoop.clockWasSet();
        QCOMPARE(calls, 0);
        f.offset = 20min;
        f.runLoop.clockWasSet();
        QCOMPARE(calls, 1);
    }

    void everyWakeUpIsReportedBeforeTheTimers()
    {
        Settable f;
        QStringList log;
        f.runLoop.onWakeUp = [&log] { log.append(QStringLiteral("wake-up")); };
        const Timer timer = f.runLoop.scheduleOnce(f.runLoop.now() + 1ms, 0s,
                                                   [&log] { log.append(QStringLiteral("timer")); });
        QTRY_COMPARE(log, QStringList({QStringLiteral("wake-up"), QStringLiteral("timer")}));
        log.clear();
        const Timer later = f.runLoop.scheduleOnce(f.runLoop.now() + 20min, 0s,
                                                   [&log] { log.append(QStringLiteral("timer")); });
        f.offset = 20min;
        f.runLoop.clockWasSet();
        QCOMPARE(log, QStringList({QStringLiteral("wake-up"), QStringLiteral("timer")}));
    }

    void clockSetBackWaitsOnButARepeatingTimerDoesNot()
    {
        TwoTimers f;
        f.offset = -1h;
        f.runLoop.clockWasSet();
        // The kernel's clock has not been set: by its time the repeating timer is due at once.
        QTRY_VERIFY(f.repeated > 0);
        QCOMPARE(f.once, 0);
    }

    void kernelReportsASetClockWhenItsTimerIsRead()
    {
        TwoTimers f;
        f.offset = -1h;
        isClockSet = true;
        QTRY_VERIFY(f.repeated > 0);
        QCOMPARE(f.once, 0);
        QVERIFY(!isClockSet);
    }

    void kernelReportsASetClockWhenATimerIsArmed()
    {
        Settable f;
        int calls = 0;
        isClockSet = true;
        const Timer timer = f.runLoop.scheduleOnce(f.runLoop.now() + 20min, 10s, [&] { ++calls; });
        QVERIFY(!isClockSet);
        f.offset = 20min;
        QCOMPARE(calls, 0);
        QTRY_COMPARE(calls, 1);
    }

    void timersThatOutliveTheRunLoop()
    {
        Timer timer;
        {
            TimerfdRunLoop runLoop;
            timer = runLoop.scheduleOnce(runLoop.now() + 1h, 0s, [] {});
        }
        timer.invalidate();
    }
};

ORVANE_TEST(TimerfdRunLoopTest, QCoreApplication)
#include "TimerfdRunLoopTest.moc"
