// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakEngine.h"
#include "Support/EngineFixture.h"
#include "Support/TestProgram.h"

#include <QTest>

#include <functional>
#include <random>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int secondsInAnHour = 3600;

/// An engine whose clock is set once a second, and what its user sees.
struct SteppingClock : EngineFixture
{
    /// Lets one real hour pass. `step` returns by how much the clock is set after each second.
    void passAnHour(const std::function<Interval()> &step)
    {
        for (int second = 0; second < secondsInAnHour; ++second) {
            pass(1s);
            runLoop.jump(step());
            observe();
        }
    }

    /// Lets real time pass.
    void pass(Interval interval)
    {
        runLoop.advance(interval);
        observe();
    }

    void observe()
    {
        for (const QString &line : takeLog()) {
            if (line.startsWith("show"_L1)) {
                ++breaks;
                areTwoShown = areTwoShown || isBreakShown;
                isBreakShown = true;
            } else if (line == "hide"_L1) {
                isBreakShown = false;
            }
        }
        isShownWrongly = isShownWrongly || isBreakShown != engine.isOnBreak();
        maxTimers = std::max(maxTimers, runLoop.timers().size());
    }

    int breaks = 0;
    bool isBreakShown = false;
    bool areTwoShown = false;
    bool isShownWrongly = false;
    std::size_t maxTimers = 0;
};

} // namespace

/// The engine with a faulty clock or a blocked event loop.
class BreakEngineFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void clockSteppingForwardsEverySecond()
    {
        SteppingClock f;
        f.engine.start();
        f.passAnHour([] { return 59s; });
        // The clock advances by sixty hours: a break every twenty minutes and twenty seconds, each of which
        // ends at the next step.
        QVERIFY2(f.breaks >= 170 && f.breaks <= 180, qPrintable(QString::number(f.breaks)));
        QVERIFY(!f.areTwoShown && !f.isShownWrongly);
        QCOMPARE(f.maxTimers, std::size_t(2));
        f.pass(20min);
        f.pass(20s);
        QVERIFY(!f.isBreakShown);
    }

    void clockSteppingBackwardsEverySecond()
    {
        SteppingClock f;
        f.engine.start();
        f.passAnHour([] { return -2s; });
        QCOMPARE(f.breaks, 0);
        QCOMPARE(f.engine.statusText(), u"Prochaine pause dans 1 h 20"_s);
        // The clock is right again: the break that was due meanwhile comes at once.
        f.runLoop.jump(2h);
        f.observe();
        QCOMPARE(f.breaks, 1);
        f.pass(20s);
        QVERIFY(!f.isBreakShown);
    }

    void clockSteppingBackwardsDuringABreak()
    {
        SteppingClock f;
        f.engine.breakNow();
        f.passAnHour([] { return -2s; });
        // It ends by the clock, so it is still showing; "Passer" and Escape work all the time.
        QVERIFY(f.isBreakShown && !f.areTwoShown);
        f.overlay->onSkip();
        f.observe();
        QVERIFY(!f.isBreakShown && !f.isShownWrongly);
        QCOMPARE(timerLines(f.runLoop), QStringList());
    }

    void clockSteppingAtRandomEverySecond_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 20; ++seed)
            QTest::addRow("%u", seed) << seed;
    }

    void clockSteppingAtRandomEverySecond()
    {
        QFETCH(quint32, seed);
        std::mt19937 random(seed);
        std::uniform_int_distribution<int> seconds(-90, 90);
        SteppingClock f;
        const Date begin = f.runLoop.now();
        f.engine.start();
        f.passAnHour([&] { return std::chrono::seconds(seconds(random)); });
        QVERIFY(!f.areTwoShown && !f.isShownWrongly);
        QVERIFY(f.maxTimers <= 2);
        // The clock is right again, and breaks come as usual.
        f.runLoop.jump(begin + 1h - f.runLoop.now());
        f.engine.stop();
        f.engine.start();
        f.observe();
        QCOMPARE(timerLines(f.runLoop), (QStringList{u"once 1200 ±10"_s, u"every 60 ±5"_s}));
        const int before = f.breaks;
        f.pass(20min);
        QCOMPARE(f.breaks, before + 1);
        f.pass(20s);
        QVERIFY(!f.isBreakShown);
    }

    void eventLoopBlockedDuringABreak()
    {
        EngineFixture f;
        f.engine.breakNow();
        f.runLoop.advance(5s);
        f.takeLog();
        f.runLoop.block(10s);
        // The ring stands still and then jumps to where it would be.
        QCOMPARE(f.takeLog(), QStringList{u"update 5.000 0.250"_s});
        f.runLoop.advance(5s - 1us);
        QVERIFY(f.overlay->isShown);
        f.runLoop.advance(1us);
        QVERIFY(!f.overlay->isShown);
    }

    void eventLoopBlockedOverTheEndOfABreak()
    {
        EngineFixture f;
        f.engine.start();
        f.engine.breakNow();
        f.runLoop.advance(15s);
        f.takeLog();
        f.runLoop.block(10s);
        // The break ends five seconds late, and the wait for the next one starts only then.
        QCOMPARE(f.takeLog(), (QStringList{u"hide"_s, u"change"_s}));
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 20min);
        QCOMPARE(timerLines(f.runLoop), (QStringList{u"once 1200 ±10"_s, u"every 60 ±5"_s}));
    }

    void eventLoopBlockedWhileABreakIsDue()
    {
        EngineFixture f;
        f.engine.start();
        f.runLoop.advance(20min - 5s);
        f.takeLog();
        f.runLoop.block(10s);
        // The status line has missed a minute; the break is five seconds late and lasts as long as usual.
        QCOMPARE(f.takeLog(), (QStringList{u"show 20"_s, u"change"_s}));
        f.runLoop.advance(20s - 1us);
        QVERIFY(f.overlay->isShown);
        f.runLoop.advance(1us);
        QVERIFY(!f.overlay->isShown);
    }

    void eventLoopBlockedWhileWaiting()
    {
        EngineFixture f;
        f.engine.start();
        f.runLoop.advance(5min + 55s);
        f.takeLog();
        f.runLoop.block(10s);
        // One call replaces the missed ones, and the next one keeps the phase.
        QCOMPARE(f.takeLog(), QStringList{u"change"_s});
        f.runLoop.advance(55s - 1us);
        QCOMPARE(f.takeLog(), QStringList());
        f.runLoop.advance(1us);
        QCOMPARE(f.takeLog(), QStringList{u"change"_s});
        QCOMPARE(f.engine.statusText(), u"Prochaine pause dans 13 min"_s);
    }
};

ORVANE_TEST(BreakEngineFaultsTest, TestProgram::NoApplication)
#include "BreakEngineFaultsTest.moc"
