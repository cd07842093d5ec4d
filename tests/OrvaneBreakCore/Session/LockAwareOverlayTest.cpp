// SPDX-License-Identifier: GPL-3.0-or-later
#include "LockAwareOverlay.h"

#include "LockAwareUserIdle.h"
#include "Support/EngineFakes.h"
#include "Support/EngineFixture.h"
#include "Support/TestProgram.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// A break screen whose calls are in the log, in a session that a test locks.
struct Session
{
    Session()
    {
        auto fake = std::make_unique<FakeOverlay>(log);
        screen = fake.get();
        overlay = std::make_unique<LockAwareOverlay>(std::move(fake), [this] { return isLocked; });
    }

    [[nodiscard]] QStringList takeLog() { return std::exchange(log, {}); }

    /// Five of the engine's ticks.
    void passHalfASecond() const
    {
        for (int tick = 0; tick < 5; ++tick)
            overlay->update(17, 0.85);
    }

    bool isLocked = false;
    QStringList log;
    FakeOverlay *screen = nullptr;
    std::unique_ptr<LockAwareOverlay> overlay;
};

/// An engine with reminders on, in a session that a test locks.
struct LockableEngine
{
    LockableEngine()
    {
        preferences.setValue(u"OBSoundEnabled"_s, true);
        engine.onChange = [this] { log.append(u"change"_s); };
        engine.start();
        log.clear();
    }

    bool isLocked = false;
    QStringList log;
    ManualRunLoop runLoop;
    MemoryPreferences preferences;
    FakeUserIdle input;
    FakeChime chime{log};
    LockAwareUserIdle userIdle{input, [this] { return isLocked; }};
    BreakEngine engine{{runLoop, preferences, userIdle, chime,
                        std::make_unique<LockAwareOverlay>(std::make_unique<FakeOverlay>(log),
                                                           [this] { return isLocked; })}};
};

} // namespace

/// Breaks and the lock screen.
class LockAwareOverlayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void passesEverythingOnWhileUnlocked()
    {
        Session session;
        session.overlay->update(1, 1);
        session.overlay->show(20);
        session.overlay->update(19, 0.95);
        session.overlay->hide();
        session.overlay->hide();
        session.overlay->update(18, 0.9);
        QCOMPARE(session.takeLog(), (QStringList{u"show 20"_s, u"update 19.000 0.950"_s, u"hide"_s}));
    }

    static void showsNothingWhileLocked()
    {
        Session session;
        session.isLocked = true;
        session.overlay->show(20);
        session.overlay->update(19, 0.95);
        session.overlay->hide();
        QCOMPARE(session.takeLog(), QStringList());
    }

    static void aLockHidesABreakAndTheUnlockBringsItBackWithinHalfASecond()
    {
        Session session;
        session.overlay->show(20);
        session.isLocked = true;
        session.passHalfASecond();
        QCOMPARE(session.takeLog().mid(5), QStringList(u"hide"_s));
        session.passHalfASecond();
        QCOMPARE(session.takeLog(), QStringList());
        session.isLocked = false;
        session.passHalfASecond();
        QCOMPARE(session.takeLog(), (QStringList{u"show 20"_s, u"update 17.000 0.850"_s}));
        session.isLocked = true;
        session.passHalfASecond();
        session.overlay->hide();
        session.isLocked = false;
        session.passHalfASecond();
        QCOMPARE(session.takeLog().mid(4), QStringList(u"hide"_s));
    }

    static void aSecondBreakReplacesTheFirst()
    {
        Session session;
        session.overlay->show(20);
        session.overlay->show(30);
        QCOMPARE(session.takeLog(), (QStringList{u"show 20"_s, u"hide"_s, u"show 30"_s}));
    }

    static void skippingIsPassedOn()
    {
        Session session;
        session.screen->onSkip();
        int skips = 0;
        session.overlay->onSkip = [&skips] { ++skips; };
        session.screen->onSkip();
        QCOMPARE(skips, 1);
    }

    static void lockedIsIdleWhateverIsTyped()
    {
        bool isLocked = false;
        FakeUserIdle input;
        input.setAll(2);
        const LockAwareUserIdle userIdle(input, [&isLocked] { return isLocked; });
        QVERIFY(userIdle.secondsSinceLastInput() == input.seconds);
        isLocked = true;
        for (const double seconds : userIdle.secondsSinceLastInput())
            QVERIFY(seconds > 1e9);
        isLocked = false;
        QVERIFY(userIdle.secondsSinceLastInput() == input.seconds);
    }

    static void aBreakThatBecomesDueWhileLockedIsSkipped()
    {
        LockableEngine session;
        session.isLocked = true;
        session.runLoop.advance(20min);
        QVERIFY(!session.engine.isOnBreak());
        QVERIFY(!session.log.contains(u"play Glass"_s));
        QCOMPARE(session.engine.nextBreakDate(), session.runLoop.now() + 20min);
        session.isLocked = false;
        session.runLoop.advance(20min);
        QVERIFY(session.engine.isOnBreak());
        QVERIFY(session.log.contains(u"play Glass"_s) && session.log.contains(u"show 20"_s));
    }

    static void aBreakReturnsWhenTheUserIsBackWithinIt()
    {
        LockableEngine session;
        session.runLoop.advance(20min + 1s);
        QCOMPARE(session.log.count(u"show 20"_s), 1);
        session.isLocked = true;
        session.runLoop.advance(500ms);
        QCOMPARE(session.log.last(), u"hide"_s);
        session.isLocked = false;
        session.runLoop.advance(500ms);
        QCOMPARE(session.log.count(u"show 20"_s), 2);
        session.runLoop.advance(20s);
        QVERIFY(!session.engine.isOnBreak());
        QCOMPARE(session.log.count(u"hide"_s), 2);
    }
};

ORVANE_TEST(LockAwareOverlayTest, TestProgram::NoApplication)
#include "LockAwareOverlayTest.moc"
