// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/ManualRunLoop.h"
#include "Support/TestProgram.h"

#include <QStringList>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TimerScheduleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aSingleTimerFiresOnTime()
    {
        ManualRunLoop runLoop;
        Date fired;
        const Timer timer = runLoop.scheduleOnce(runLoop.now() + 20min, 10s, [&] { fired = runLoop.now(); });
        const Date due = runLoop.now() + 20min;
        runLoop.advance(1h);
        QCOMPARE(fired, due);
        QCOMPARE(runLoop.wakeUps(), 1);
    }

    void overlappingWindowsShareAWakeUp()
    {
        ManualRunLoop runLoop;
        QStringList fired;
        const Date start = runLoop.now();
        const auto note = [&](const QString &name) {
            return [&, name] { fired << u"%1 %2"_s.arg(name).arg((runLoop.now() - start) / 1s); };
        };
        const Timer tolerant = runLoop.scheduleOnce(start + 60s, 10s, note(u"tolerant"_s));
        const Timer inside = runLoop.scheduleOnce(start + 65s, 5s, note(u"inside"_s));
        const Timer atTheEdge = runLoop.scheduleOnce(start + 70s, 0s, note(u"edge"_s));
        const Timer beyond = runLoop.scheduleOnce(start + 71s, 60s, note(u"beyond"_s));
        runLoop.advance(2min);
        QCOMPARE(fired, (QStringList{u"tolerant 70"_s, u"inside 70"_s, u"edge 70"_s, u"beyond 71"_s}));
        QCOMPARE(runLoop.wakeUps(), 2);
    }

    void anUrgentTimerIsNotDelayedByATolerantOne()
    {
        ManualRunLoop runLoop;
        std::vector<Date> fired;
        const Date start = runLoop.now();
        const Timer tolerant = runLoop.scheduleOnce(start + 60s, 1h, [&] { fired.push_back(runLoop.now()); });
        const Timer urgent = runLoop.scheduleOnce(start + 61s, 0s, [&] { fired.push_back(runLoop.now()); });
        runLoop.advance(2min);
        QCOMPARE(fired, (std::vector<Date>{start + 61s, start + 61s}));
    }

    void aDateInThePastIsDueAtOnce()
    {
        ManualRunLoop runLoop;
        int calls = 0;
        const Timer timer = runLoop.scheduleOnce(runLoop.now() - 1h, 0s, [&] { ++calls; });
        QCOMPARE(calls, 0);
        runLoop.advance(0s);
        QCOMPARE(calls, 1);
    }

    void repeatingKeepsItsPhaseAndReplacesMissedCallsByOne()
    {
        ManualRunLoop runLoop;
        std::vector<double> fired;
        const Date start = runLoop.now();
        const Timer timer = runLoop.scheduleRepeating(
            60s, 5s, [&] { fired.push_back(std::chrono::duration<double>(runLoop.now() - start).count()); });
        runLoop.advance(2min);
        runLoop.jump(10min + 30s);
        runLoop.advance(1min);
        QCOMPARE(fired, (std::vector<double>{60, 120, 750, 780}));
    }

    void clockSetBackDelaysAOneShotAndNotARepeatingTimer()
    {
        ManualRunLoop runLoop;
        int once = 0;
        int repeated = 0;
        const Timer oneShot = runLoop.scheduleOnce(runLoop.now() + 1min, 0s, [&] { ++once; });
        const Timer repeating = runLoop.scheduleRepeating(1min, 0s, [&] { ++repeated; });
        runLoop.jump(-1h);
        runLoop.advance(1h);
        QCOMPARE(once, 0);
        QCOMPARE(repeated, 60);
        runLoop.advance(1min);
        QCOMPARE(once, 1);
    }

    void clockSetForwardFiresAtOnceAndOnce()
    {
        ManualRunLoop runLoop;
        int calls = 0;
        const Timer timer = runLoop.scheduleOnce(runLoop.now() + 20min, 10s, [&] { ++calls; });
        runLoop.jump(20min - 1us);
        QCOMPARE(calls, 0);
        runLoop.jump(1us);
        QCOMPARE(calls, 1);
        runLoop.jump(8h);
        QCOMPARE(calls, 1);
    }

    void destroyedMovedAndInvalidatedHandles()
    {
        ManualRunLoop runLoop;
        int calls = 0;
        const auto count = [&] { ++calls; };
        {
            const Timer destroyed = runLoop.scheduleOnce(runLoop.now() + 1s, 0s, count);
        }
        Timer first = runLoop.scheduleOnce(runLoop.now() + 1s, 0s, count);
        Timer second = std::move(first);
        second.invalidate();
        second.invalidate();
        Timer overwritten = runLoop.scheduleOnce(runLoop.now() + 1s, 0s, count);
        overwritten = runLoop.scheduleOnce(runLoop.now() + 2s, 0s, count);
        QCOMPARE(runLoop.timers().size(), std::size_t(1));
        runLoop.advance(1min);
        QCOMPARE(calls, 1);
        QVERIFY(!second);
        QVERIFY(overwritten);
    }

    void aHandleThatOutlivesItsRunLoopIsInert()
    {
        Timer timer;
        {
            ManualRunLoop runLoop;
            timer = runLoop.scheduleOnce(runLoop.now(), 0s, [] { QFAIL("must not be called"); });
        }
        timer.invalidate();
        QVERIFY(!timer);
    }

    void actionsMayCancelAndSchedule()
    {
        ManualRunLoop runLoop;
        QStringList fired;
        Timer self;
        Timer other;
        Timer added;
        self = runLoop.scheduleRepeating(1s, 0s, [&] {
            fired << u"self"_s;
            other.invalidate();
            added = runLoop.scheduleOnce(runLoop.now(), 0s, [&] { fired << u"added"_s; });
            self.invalidate();
        });
        other = runLoop.scheduleRepeating(1s, 0s, [&] { fired << u"other"_s; });
        runLoop.advance(3s);
        QCOMPARE(fired, (QStringList{u"self"_s, u"added"_s}));
    }

    void withoutTimersThereIsNoWakeUp()
    {
        const TimerSchedule schedule({});
        QVERIFY(!schedule.nextWakeUp());
    }
};

ORVANE_TEST(TimerScheduleTest, TestProgram::NoApplication)
#include "TimerScheduleTest.moc"
