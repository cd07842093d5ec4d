// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakEngine.h"
#include "BreakSettings.h"
#include "Support/EngineFixture.h"
#include "Support/TestProgram.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// The engine when the clock is set, the machine sleeps, or a date is far away.
class BreakEngineClockTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void breakThatEndedDuringASuspendClosesAtResume()
    {
        EngineFixture f;
        f.engine.start();
        f.engine.breakNow();
        f.runLoop.advance(2s);
        f.takeLog();
        f.runLoop.jump(8h);
        QVERIFY(!f.engine.isOnBreak());
        QCOMPARE(f.takeLog(), (QStringList{u"hide"_s, u"change"_s}));
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 20min);
    }

    void breakDueDuringASuspendFollowsTheIdleRule()
    {
        EngineFixture away;
        away.engine.start();
        away.userIdle.setAll(8 * 3600);
        away.runLoop.jump(8h);
        QVERIFY(!away.engine.isOnBreak());
        QCOMPARE(away.engine.nextBreakDate(), away.runLoop.now() + 20min);

        EngineFixture back;
        back.engine.start();
        back.userIdle.setAll(1);
        back.runLoop.jump(8h);
        QVERIFY(back.engine.isOnBreak());
    }

    void clockSetBackKeepsTheDueDate()
    {
        EngineFixture f;
        f.engine.start();
        const auto due = f.engine.nextBreakDate();
        f.runLoop.jump(-2h);
        QCOMPARE(f.engine.nextBreakDate(), due);
        QCOMPARE(f.engine.statusText(), u"Prochaine pause dans 2 h 20"_s);
        f.runLoop.advance(2h + 20min - 1us);
        QVERIFY(!f.engine.isOnBreak());
        f.runLoop.advance(1us);
        QVERIFY(f.engine.isOnBreak());
    }

    void breakDueOverARunningOneRestartsTheCountdown()
    {
        EngineFixture f;
        f.engine.breakNow();
        f.runLoop.jump(-1h); // the running break now ends in an hour
        f.engine.start();
        f.runLoop.advance(20min - 1us);
        f.takeLog();
        f.runLoop.advance(1us);
        QCOMPARE(f.takeLog().first(3),
                 (QStringList{u"update 2420.000 121.000"_s, u"show 20"_s, u"change"_s}));
        QCOMPARE(timerLines(f.runLoop), (QStringList{u"every 0.1 ±0"_s, u"every 0.1 ±0"_s}));
        f.runLoop.advance(20s);
        QVERIFY(!f.engine.isOnBreak());
        QCOMPARE(timerLines(f.runLoop), (QStringList{u"once 1200 ±10"_s, u"every 60 ±5"_s}));
    }

    void extremePostponements()
    {
        EngineFixture f;
        f.engine.start();
        f.engine.postpone(std::numeric_limits<int>::max());
        QCOMPARE(f.engine.statusText(), u"Prochaine pause dans 35791394 h 07"_s);
        f.engine.postpone(-5);
        QCOMPARE(f.engine.statusText(), u"Prochaine pause dans 1 min"_s);
        f.runLoop.advance(1us);
        QVERIFY(f.engine.isOnBreak());
    }
};

ORVANE_TEST(BreakEngineClockTest, TestProgram::NoApplication)
#include "BreakEngineClockTest.moc"
