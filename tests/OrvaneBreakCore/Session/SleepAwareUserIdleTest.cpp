// SPDX-License-Identifier: GPL-3.0-or-later
#include "SleepAwareUserIdle.h"

#include "Support/EngineFixture.h"
#include "Support/TestProgram.h"

#include <QTest>

using namespace std::chrono_literals;

namespace {

/// A machine that is awake or asleep as the test says, and a user. The figures of its desktop stand still
/// while it sleeps.
struct Machine
{
    explicit Machine(std::chrono::seconds resolution = 0s)
        : idle(desktop, [resolution] { return resolution; }, [this] { return time; })
    {
    }

    void stayAwake(std::chrono::nanoseconds length)
    {
        time.awake += length;
        desktop.setAll(desktop.seconds.front() + std::chrono::duration<double>(length).count());
    }

    /// With the wake-up that follows a resume.
    void sleep(std::chrono::nanoseconds length)
    {
        time.asleep += length;
        idle.noteSleep();
    }

    void use() { desktop.setAll(0); }
    [[nodiscard]] double figure() const { return idle.secondsSinceLastInput().front(); }

    MachineTime time{100h, 50h};
    FakeUserIdle desktop;
    SleepAwareUserIdle idle;
};

} // namespace

/// The idle time of a machine that is suspended.
class SleepAwareUserIdleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void withoutASleepTheFiguresAreThoseOfTheDesktop()
    {
        Machine machine;
        machine.desktop.seconds = {1, 2, 3, 4, 5, 6, 7};
        machine.idle.noteSleep();
        QVERIFY(machine.idle.secondsSinceLastInput() == machine.desktop.seconds);
    }

    static void theSleepCountsForEveryKindOfInput()
    {
        Machine machine;
        machine.stayAwake(2s);
        machine.sleep(8h);
        machine.stayAwake(360ms);
        for (const double figure : machine.idle.secondsSinceLastInput())
            QCOMPARE(figure, 8 * 3600 + 2.36);
    }

    static void inputAfterTheResumeEndsTheIdleTime()
    {
        Machine machine;
        machine.sleep(8h);
        machine.stayAwake(10s);
        QCOMPARE(machine.figure(), 8 * 3600 + 10.0);
        machine.use();
        machine.stayAwake(3s);
        QCOMPARE(machine.figure(), 3.0);
    }

    static void eachKindOfInputHasItsOwnTime()
    {
        Machine machine;
        machine.stayAwake(5s);
        machine.sleep(1h);
        machine.stayAwake(10s);
        machine.desktop.seconds.back() = 1;
        QCOMPARE(machine.idle.secondsSinceLastInput().front(), 3615.0);
        QCOMPARE(machine.idle.secondsSinceLastInput().back(), 1.0);
    }

    static void sleepsWithoutInputBetweenThemAddUp()
    {
        Machine machine;
        machine.sleep(100s);
        machine.stayAwake(1s);
        machine.sleep(100s);
        machine.stayAwake(1s);
        machine.sleep(150s);
        QCOMPARE(machine.figure(), 352.0);
        machine.stayAwake(2s);
        machine.use();
        machine.stayAwake(1s);
        machine.sleep(200s);
        QCOMPARE(machine.figure(), 201.0);
    }

    static void aSleepThatWasNotNotedIsLearntLater()
    {
        Machine machine;
        machine.time.asleep += 1h;
        QCOMPARE(machine.figure(), 0.0);
        machine.idle.noteSleep();
        QCOMPARE(machine.figure(), 3600.0);
    }

    static void readingTwoClocksOneAfterTheOtherIsNoSleep()
    {
        Machine machine;
        for (int reading = 0; reading < 100; ++reading) {
            machine.sleep(reading % 2 == 0 ? 999ms : -999ms);
            QCOMPARE(machine.figure(), 0.0);
        }
    }

    static void oneSleepAfterTheOtherIsForgotten()
    {
        Machine machine;
        for (int night = 0; night < 5; ++night) {
            machine.sleep(8h);
            machine.stayAwake(1s);
            machine.use();
            machine.stayAwake(16h);
            QCOMPARE(machine.figure(), 16 * 3600.0);
        }
    }

    static void theFiguresOfAProtocolWithATimeout()
    {
        Machine machine(60s);
        machine.sleep(8h);
        // A figure of 0 may be up to a minute.
        machine.time.awake += 59s;
        QCOMPARE(machine.figure(), 8 * 3600.0);
        machine.time.awake += 2s;
        QCOMPARE(machine.figure(), 0.0);
        machine.desktop.setAll(61);
        QCOMPARE(machine.figure(), 8 * 3600.0 + 61);
    }

    static void aBreakThatBecameDueDuringASleepIsSkipped_data()
    {
        QTest::addColumn<int>("minutes");
        QTest::addColumn<bool>("isOnBreak");
        QTest::newRow("a night") << 480 << false;
        QTest::newRow("five minutes") << 5 << false;
        QTest::newRow("four minutes") << 4 << true;
    }

    static void aBreakThatBecameDueDuringASleepIsSkipped()
    {
        QFETCH(int, minutes);
        Machine machine;
        QStringList log;
        ManualRunLoop runLoop;
        MemoryPreferences preferences;
        FakeChime chime(log);
        BreakEngine engine({runLoop, preferences, machine.idle, chime, std::make_unique<FakeOverlay>(log)});
        engine.start();
        runLoop.advance(19min);
        machine.stayAwake(2s);
        machine.sleep(std::chrono::minutes(minutes));
        runLoop.jump(std::chrono::minutes(minutes));
        QTEST(engine.isOnBreak(), "isOnBreak");
    }

    static void theClocksOfThisMachine()
    {
        const MachineTime first = MachineTime::now();
        const MachineTime second = MachineTime::now();
        QVERIFY(first.awake > 0s && second.awake >= first.awake);
        // It does not sleep during a test.
        QVERIFY(first.asleep > -1s && second.asleep - first.asleep < 1s);
    }
};

ORVANE_TEST(SleepAwareUserIdleTest, TestProgram::NoApplication)
#include "SleepAwareUserIdleTest.moc"
