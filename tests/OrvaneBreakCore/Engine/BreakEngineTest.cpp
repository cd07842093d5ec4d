// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakEngine.h"

#include "BreakSettings.h"
#include "SharedInstance.h"
#include "Support/EngineFixture.h"
#include "Support/TestProgram.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QStringList ticksOnly(const QStringList &log)
{
    return log.filter(u"update"_s);
}

} // namespace

class BreakEngineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void offAfterLaunch()
    {
        EngineFixture f;
        QVERIFY(!f.engine.isActive());
        QVERIFY(!f.engine.isOnBreak());
        QVERIFY(!f.engine.nextBreakDate());
        QVERIFY(f.runLoop.timers().empty());
        QCOMPARE(f.engine.statusText(), u"Rappels désactivés"_s);
        f.runLoop.advance(24h);
        QCOMPARE(f.takeLog(), QStringList());
    }

    void startSchedulesOneIntervalAhead()
    {
        EngineFixture f;
        f.engine.start();
        QVERIFY(f.engine.isActive());
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 20min);
        QCOMPARE(timerLines(f.runLoop), (QStringList{u"once 1200 ±10"_s, u"every 60 ±5"_s}));
        QCOMPARE(f.takeLog(), QStringList{u"change"_s});
        QCOMPARE(f.engine.statusText(), u"Prochaine pause dans 20 min"_s);
    }

    void secondStartChangesNothing()
    {
        EngineFixture f;
        f.engine.start();
        f.runLoop.advance(30s);
        f.takeLog();
        const auto next = f.engine.nextBreakDate();
        const QStringList timers = timerLines(f.runLoop);
        f.engine.start();
        QCOMPARE(f.engine.nextBreakDate(), next);
        QCOMPARE(timerLines(f.runLoop), timers);
        QCOMPARE(f.takeLog(), QStringList());
    }

    void statusTickRefreshesOnceAMinute()
    {
        EngineFixture f;
        f.engine.start();
        f.takeLog();
        f.runLoop.advance(19min);
        QCOMPARE(f.takeLog(), QStringList(19, u"change"_s));
        QCOMPARE(f.runLoop.wakeUps(), 19);
    }

    void oneBreakFromStartToEnd()
    {
        EngineFixture f;
        f.engine.start();
        f.runLoop.advance(20min - 1us);
        QVERIFY(!f.engine.isOnBreak());
        f.takeLog();
        f.runLoop.advance(1us);
        QVERIFY(f.engine.isOnBreak());
        QVERIFY(!f.engine.nextBreakDate());
        QCOMPARE(f.takeLog(), (QStringList{u"show 20"_s, u"change"_s}));
        QCOMPARE(timerLines(f.runLoop), QStringList{u"every 0.1 ±0"_s});
        QCOMPARE(f.engine.statusText(), u"Pause en cours : regarde au loin"_s);

        f.runLoop.advance(20s - 1us);
        const QStringList ticks = f.takeLog();
        QCOMPARE(ticks.size(), 199);
        QCOMPARE(ticks.first(), u"update 19.900 0.995"_s);
        QCOMPARE(ticks.at(157), u"update 4.200 0.210"_s);
        QCOMPARE(ticks.last(), u"update 0.100 0.005"_s);

        f.runLoop.advance(1us);
        QVERIFY(!f.engine.isOnBreak());
        QCOMPARE(f.takeLog(), (QStringList{u"hide"_s, u"change"_s}));
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 20min);
        QCOMPARE(timerLines(f.runLoop), (QStringList{u"once 1200 ±10"_s, u"every 60 ±5"_s}));
    }

    void aDayOfBreaks()
    {
        EngineFixture f;
        int breaks = 0;
        f.engine.start();
        for (int second = 0; second < 8 * 3600; ++second) {
            f.runLoop.advance(1s);
            breaks += static_cast<int>(f.takeLog().count(u"show 20"_s));
        }
        // 20 min of wait and 20 s of break each: 28,800 s / 1,220 s
        QCOMPARE(breaks, 23);
    }

    void idleTimeFromTheThresholdOnSkips_data()
    {
        QTest::addColumn<double>("idle");
        QTest::addColumn<bool>("isSkipped");
        QTest::newRow("299.999 s") << 299.999 << false;
        QTest::newRow("300 s") << 300.0 << true;
        QTest::newRow("a night") << 30000.0 << true;
        QTest::newRow("unknown counts as active") << 0.0 << false;
    }

    void idleTimeFromTheThresholdOnSkips()
    {
        QFETCH(const double, idle);
        QFETCH(const bool, isSkipped);
        EngineFixture f;
        f.engine.start();
        f.userIdle.setAll(idle);
        f.runLoop.advance(20min);
        QCOMPARE(f.engine.isOnBreak(), !isSkipped);
        if (!isSkipped)
            return;
        QVERIFY(!f.log.contains(u"show 20"_s));
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 20min);
        QCOMPARE(timerLines(f.runLoop), (QStringList{u"every 60 ±5"_s, u"once 1200 ±10"_s}));
        QCOMPARE(f.log.last(), u"change"_s);
    }

    void skippedBreakCountsTheNewInterval()
    {
        EngineFixture f;
        f.engine.start();
        f.userIdle.setAll(1000);
        BreakSettings::setIntervalMinutes(f.preferences, 45);
        f.runLoop.advance(20min);
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 45min);
    }

    void theMostRecentInputOfAnyKindCounts()
    {
        for (std::size_t kind = 0; kind < InputIdleSeconds().size(); ++kind) {
            EngineFixture f;
            f.engine.start();
            f.userIdle.setAll(600);
            f.userIdle.seconds.at(kind) = 2;
            f.runLoop.advance(20min);
            QVERIFY2(f.engine.isOnBreak(), qPrintable(u"kind %1"_s.arg(kind)));
        }
    }

    void breakNowDuringABreakDoesNothing()
    {
        EngineFixture f;
        f.engine.start();
        f.engine.breakNow();
        f.runLoop.advance(5s);
        f.takeLog();
        const QStringList timers = timerLines(f.runLoop);
        f.engine.breakNow();
        QCOMPARE(f.takeLog(), QStringList());
        QCOMPARE(timerLines(f.runLoop), timers);
        f.runLoop.advance(15s);
        QVERIFY(!f.engine.isOnBreak());
    }

    void breakNowWhileOffEndsOff()
    {
        EngineFixture f;
        f.engine.breakNow();
        QVERIFY(f.engine.isOnBreak());
        QVERIFY(!f.engine.isActive());
        QCOMPARE(f.takeLog(), (QStringList{u"show 20"_s, u"change"_s}));
        f.runLoop.advance(20s);
        QVERIFY(!f.engine.isOnBreak());
        QVERIFY(!f.engine.isActive());
        QVERIFY(!f.engine.nextBreakDate());
        QVERIFY(f.runLoop.timers().empty());
        QCOMPARE(f.engine.statusText(), u"Rappels désactivés"_s);
        QCOMPARE(f.log.last(), u"change"_s);
    }

    void breakNowWhileWaitingCancelsTheWait()
    {
        EngineFixture f;
        f.engine.start();
        f.engine.breakNow();
        QVERIFY(f.engine.isActive());
        QVERIFY(!f.engine.nextBreakDate());
        QCOMPARE(timerLines(f.runLoop), QStringList{u"every 0.1 ±0"_s});
    }

    void changedPauseLengthMovesTheFractionAndNotTheEnd()
    {
        EngineFixture f;
        BreakSettings::setPauseSeconds(f.preferences, 60);
        f.engine.breakNow();
        f.runLoop.advance(10s);
        f.takeLog();
        BreakSettings::setPauseSeconds(f.preferences, 20);
        f.runLoop.advance(100ms);
        QCOMPARE(f.takeLog(), QStringList{u"update 49.900 2.495"_s});
        f.runLoop.advance(49s + 800ms);
        QVERIFY(f.engine.isOnBreak());
        f.runLoop.advance(100ms);
        QVERIFY(!f.engine.isOnBreak());
    }

    void postponeDuringABreak()
    {
        EngineFixture f;
        f.engine.start();
        f.engine.breakNow();
        f.runLoop.advance(3s);
        f.takeLog();
        f.engine.postpone(10);
        QCOMPARE(f.takeLog(), (QStringList{u"hide"_s, u"change"_s}));
        QVERIFY(!f.engine.isOnBreak());
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 10min);
    }

    void postponeDuringABreakWithRemindersOffIsSilent()
    {
        EngineFixture f;
        f.engine.breakNow();
        f.takeLog();
        f.engine.postpone(10);
        QCOMPARE(f.takeLog(), QStringList{u"hide"_s});
        QVERIFY(!f.engine.isOnBreak());
        QVERIFY(!f.engine.nextBreakDate());
        QVERIFY(f.runLoop.timers().empty());
    }

    void postponeWhileWaitingKeepsThePhaseOfTheTick()
    {
        EngineFixture f;
        f.engine.start();
        f.runLoop.advance(90s);
        f.takeLog();
        f.engine.postpone(10);
        QCOMPARE(f.takeLog(), QStringList{u"change"_s});
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 10min);
        f.runLoop.advance(30s);
        QCOMPARE(f.takeLog(), QStringList{u"change"_s});
    }

    void postponeWhileOffDoesNothing()
    {
        EngineFixture f;
        f.engine.postpone(10);
        QCOMPARE(f.takeLog(), QStringList());
        QVERIFY(f.runLoop.timers().empty());
    }

    void stopDuringABreak()
    {
        EngineFixture f;
        f.engine.start();
        f.engine.breakNow();
        f.takeLog();
        f.engine.stop();
        QCOMPARE(f.takeLog(), (QStringList{u"hide"_s, u"change"_s}));
        QVERIFY(!f.engine.isActive());
        QVERIFY(!f.engine.isOnBreak());
        QVERIFY(!f.engine.nextBreakDate());
        QVERIFY(f.runLoop.timers().empty());
    }

    void stopWhileOffStillReports()
    {
        EngineFixture f;
        f.engine.stop();
        QCOMPARE(f.takeLog(), QStringList{u"change"_s});
    }

    void changedIntervalRestartsTheWait()
    {
        EngineFixture f;
        f.engine.start();
        f.runLoop.advance(15min);
        f.takeLog();
        BreakSettings::setIntervalMinutes(f.preferences, 10);
        f.engine.rescheduleFromSettings();
        QCOMPARE(f.takeLog(), QStringList{u"change"_s});
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 10min);
    }

    void changedIntervalDuringABreakWaitsForItsEnd()
    {
        EngineFixture f;
        f.engine.start();
        f.engine.breakNow();
        f.takeLog();
        BreakSettings::setIntervalMinutes(f.preferences, 45);
        f.engine.rescheduleFromSettings();
        QCOMPARE(f.takeLog(), QStringList());
        QVERIFY(!f.engine.nextBreakDate());
        f.runLoop.advance(20s);
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 45min);
    }

    void changedIntervalWhileOffDoesNothing()
    {
        EngineFixture f;
        f.engine.rescheduleFromSettings();
        QCOMPARE(f.takeLog(), QStringList());
        QVERIFY(f.runLoop.timers().empty());
    }

    void startDuringABreakByHand()
    {
        EngineFixture f;
        f.engine.breakNow();
        f.runLoop.advance(5s);
        f.takeLog();
        f.engine.start();
        QVERIFY(f.engine.isActive());
        QVERIFY(f.engine.isOnBreak());
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 20min);
        QCOMPARE(f.takeLog(), QStringList{u"change"_s});
        QCOMPARE(f.engine.statusText(), u"Pause en cours : regarde au loin"_s);
        f.runLoop.advance(15s);
        QVERIFY(!f.engine.isOnBreak());
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 20min);
        QCOMPARE(timerLines(f.runLoop).filter(u"once"_s).size(), 1);
    }

    void skipEndsTheBreak()
    {
        EngineFixture f;
        f.engine.start();
        f.engine.breakNow();
        f.runLoop.advance(1s);
        f.takeLog();
        f.overlay->onSkip();
        QCOMPARE(f.takeLog(), (QStringList{u"hide"_s, u"change"_s}));
        QVERIFY(!f.engine.isOnBreak());
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 20min);
    }

    void skipWithRemindersOff()
    {
        EngineFixture f;
        f.engine.breakNow();
        f.takeLog();
        f.overlay->onSkip();
        QCOMPARE(f.takeLog(), (QStringList{u"hide"_s, u"change"_s}));
        QVERIFY(f.runLoop.timers().empty());
    }

    void soundOnlyWhenEnabled()
    {
        EngineFixture f;
        BreakSettings::setSoundEnabled(f.preferences, true);
        f.engine.breakNow();
        QCOMPARE(f.takeLog(), (QStringList{u"show 20"_s, u"play Glass"_s, u"change"_s}));
    }

    void worksWithoutAListener()
    {
        EngineFixture f;
        f.engine.onChange = nullptr;
        f.engine.start();
        f.runLoop.advance(2h);
        f.engine.stop();
        QVERIFY(!f.engine.isActive());
        QVERIFY(!ticksOnly(f.takeLog()).isEmpty());
    }

    void sharedIsTheRegisteredEngine()
    {
        EngineFixture f;
        const SharedInstance<BreakEngine> shared(f.engine);
        QCOMPARE(&BreakEngine::shared(), &f.engine);
    }
};

ORVANE_TEST(BreakEngineTest, TestProgram::NoApplication)
#include "BreakEngineTest.moc"
