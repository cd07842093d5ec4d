// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/TestProgram.h"
#include "WaylandIdleFixture.h"

#include <QAbstractEventDispatcher>
#include <QRegularExpression>
#include <QTest>

#include <wayland-client-core.h>

#include <cstdarg>

using namespace std::chrono_literals;

namespace {

using Kind = FakeCompositor::Kind;

int clientLogLines = 0;

/// The KDE protocol if `kde`, and ext-idle-notify-v1 of that version unless it is 0.
void offer(FakeCompositor &compositor, bool kde, int version)
{
    if (kde)
        compositor.offerKdeIdle();
    if (version > 0)
        compositor.offerExtIdleNotify(version);
}

} // namespace

/// The idle time from the Wayland protocols, with a compositor and a clock of the test's.
class WaylandUserIdleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void initTestCase()
    {
        wl_log_set_handler_client([](const char *, va_list) { ++clientLogLines; });
    }

    static void init()
    {
        clientLogLines = 0;
        QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
    }

    static void cleanup() { QCOMPARE(clientLogLines, 0); }

    void idledAndResumed_data()
    {
        QTest::addColumn<bool>("kde");
        QTest::addColumn<int>("version");
        QTest::addColumn<Kind>("kind");
        QTest::newRow("ext-idle-notify-v1") << false << 1 << Kind::ExtIdle;
        QTest::newRow("its version 2") << false << 2 << Kind::ExtInputIdle;
        QTest::newRow("org_kde_kwin_idle") << true << 0 << Kind::KdeIdle;
        QTest::newRow("both") << true << 2 << Kind::ExtInputIdle;
    }

    void idledAndResumed()
    {
        QFETCH(bool, kde);
        QFETCH(int, version);
        WaylandIdleFixture f;
        f.compositor.offerSeat();
        offer(f.compositor, kde, version);
        f.start();
        QVERIFY(f.hasNotifications(1));
        QCOMPARE(f.compositor.notifications().front().timeout, 60'000U);
        QTEST(f.compositor.notifications().front().kind, "kind");
        QCOMPARE(f.figure(), 0.0);

        f.clock.pass(59s);
        QCOMPARE(f.figure(), 0.0);
        f.compositor.sendIdled();
        QVERIFY(f.hasFigure(60));
        f.clock.pass(1500ms);
        InputIdleSeconds everyKind;
        everyKind.fill(61.5);
        QVERIFY(f.userIdle->secondsSinceLastInput() == everyKind);

        f.compositor.sendResumed();
        QVERIFY(f.hasFigure(0));
        f.clock.pass(10min);
        QCOMPARE(f.figure(), 0.0);
        f.compositor.sendIdled();
        QVERIFY(f.hasFigure(60));
    }

    void anIdleInhibitor_data() { idledAndResumed_data(); }

    void anIdleInhibitor()
    {
        QFETCH(bool, kde);
        QFETCH(int, version);
        QFETCH(Kind, kind);
        WaylandIdleFixture f;
        f.compositor.offerSeat();
        offer(f.compositor, kde, version);
        f.start();
        QVERIFY(f.hasNotifications(1));
        f.compositor.sendIdled(true);
        if (kind == Kind::ExtInputIdle) {
            QVERIFY(f.hasFigure(60));
            return;
        }
        for (int pass = 0; pass < 10; ++pass) {
            f.compositor.pump();
            QCoreApplication::processEvents();
        }
        QCOMPARE(f.figure(), 0.0);
    }

    void theTimeoutIsThatOfTheConstructor()
    {
        WaylandIdleFixture f;
        f.compositor.offerSeat();
        f.compositor.offerExtIdleNotify();
        f.start(5s);
        QVERIFY(f.hasNotifications(1));
        QCOMPARE(f.compositor.notifications().front().timeout, 5'000U);
        f.compositor.sendIdled();
        QVERIFY(f.hasFigure(5));
    }

    void aClockSetBackGivesNoNegativeFigure()
    {
        WaylandIdleFixture f;
        f.compositor.offerSeat();
        f.compositor.offerExtIdleNotify();
        f.start();
        QVERIFY(f.hasNotifications(1));
        f.compositor.sendIdled();
        QVERIFY(f.hasFigure(60));
        f.clock.pass(-1h);
        QCOMPARE(f.figure(), 0.0);
    }

    void noProtocolCountsAsActiveUntilOneAppears()
    {
        WaylandIdleFixture f;
        f.compositor.offerSeat();
        f.start();
        QVERIFY(f.settles([&] { return f.compositor.registries() == 1; }));
        QCoreApplication::processEvents();
        f.compositor.pump();
        f.clock.pass(1h);
        QCOMPARE(f.figure(), 0.0);
        QVERIFY(!f.userIdle->protocol());
        QCOMPARE(f.compositor.seatBindings(), 0);

        f.compositor.offerKdeIdle();
        QVERIFY(f.hasNotifications(1));
        QCOMPARE(f.userIdle->protocol(), WaylandIdleProtocol::KdeIdle);
        f.compositor.sendIdled();
        QVERIFY(f.hasFigure(60));
    }

    void theBetterProtocolTakesOverWhenItAppearsAndTheOtherWhenItGoes()
    {
        WaylandIdleFixture f;
        f.compositor.offerSeat();
        f.compositor.offerKdeIdle();
        f.start();
        QVERIFY(f.hasNotifications(1));
        wl_global *better = f.compositor.offerExtIdleNotify();
        QVERIFY(f.settles([&] { return f.compositor.notificationRequests() == 2; }));
        QVERIFY(f.hasNotifications(1));
        QCOMPARE(f.compositor.notifications().front().kind, Kind::ExtInputIdle);
        QCOMPARE(f.userIdle->protocol(), WaylandIdleProtocol::ExtIdleNotify);
        f.compositor.withdraw(better);
        QVERIFY(f.settles([&] { return f.compositor.notificationRequests() == 3; }));
        QVERIFY(f.hasNotifications(1));
        QCOMPARE(f.compositor.notifications().front().kind, Kind::KdeIdle);
    }

    void aSeatThatComesLater()
    {
        WaylandIdleFixture f;
        f.compositor.offerExtIdleNotify();
        f.start();
        QVERIFY(f.settles([&] { return f.compositor.registries() == 1; }));
        QCoreApplication::processEvents();
        QCOMPARE(f.compositor.notifications().size(), 0U);
        f.compositor.offerSeat();
        QVERIFY(f.hasNotifications(1));
        f.compositor.sendIdled();
        QVERIFY(f.hasFigure(60));
    }

    void aSecondSeatLeavesTheWatchOfTheFirstAlone()
    {
        WaylandIdleFixture f;
        f.compositor.offerSeat();
        f.compositor.offerExtIdleNotify();
        f.start();
        QVERIFY(f.hasNotifications(1));
        f.compositor.sendIdled();
        QVERIFY(f.hasFigure(60));

        f.compositor.offerSeat();
        f.compositor.pump();
        QCoreApplication::processEvents();
        f.compositor.pump();
        QCOMPARE(f.figure(), 60.0);
        QCOMPARE(f.compositor.notifications().size(), 1U);
        QCOMPARE(f.compositor.notificationRequests(), 1);
    }

    void aSeatOfAVersionThatCannotBeReleased()
    {
        WaylandIdleFixture f;
        wl_global *seat = f.compositor.offerSeat(1);
        f.compositor.offerExtIdleNotify();
        f.start();
        QVERIFY(f.hasNotifications(1));
        f.compositor.withdraw(seat);
        QVERIFY(f.hasNotifications(0));
        // A release request that the seat does not have would end the connection.
        f.compositor.offerSeat(1);
        QVERIFY(f.hasNotifications(1));
    }

    void onlyTheFirstSeatIsWatchedAndTheNextOneTakesOver()
    {
        WaylandIdleFixture f;
        wl_global *first = f.compositor.offerSeat();
        f.compositor.offerSeat();
        f.compositor.offerExtIdleNotify();
        f.start();
        QVERIFY(f.hasNotifications(1));
        QCOMPARE(f.compositor.seatBindings(), 1);
        f.compositor.sendIdled();
        QVERIFY(f.hasFigure(60));

        f.compositor.withdraw(first);
        QVERIFY(f.settles([&] { return f.compositor.notificationRequests() == 2; }));
        QCOMPARE(f.compositor.notifications().size(), std::size_t(1));
        QCOMPARE(f.figure(), 0.0);
        QCOMPARE(f.compositor.seatBindings(), 1);
    }

    void aSeatThatGoesAndComesBack()
    {
        WaylandIdleFixture f;
        wl_global *seat = f.compositor.offerSeat();
        f.compositor.offerExtIdleNotify();
        f.start();
        QVERIFY(f.hasNotifications(1));
        f.compositor.sendIdled();
        QVERIFY(f.hasFigure(60));

        f.compositor.withdraw(seat);
        QVERIFY(f.hasFigure(0));
        QVERIFY(f.hasNotifications(0));
        QVERIFY(f.settles([&] { return f.compositor.seatBindings() == 0; }));

        f.compositor.offerSeat();
        QVERIFY(f.hasNotifications(1));
        f.compositor.sendIdled();
        QVERIFY(f.hasFigure(60));
    }

    void aProtocolThatIsWithdrawn()
    {
        WaylandIdleFixture f;
        f.compositor.offerSeat();
        wl_global *global = f.compositor.offerExtIdleNotify();
        f.start();
        QVERIFY(f.hasNotifications(1));
        f.compositor.sendIdled();
        QVERIFY(f.hasFigure(60));
        f.compositor.withdraw(global);
        QVERIFY(f.hasFigure(0));
        QVERIFY(f.hasNotifications(0));
        f.compositor.offerExtIdleNotify();
        QVERIFY(f.hasNotifications(1));
    }

    void aCompositorThatDies()
    {
        WaylandIdleFixture f;
        f.compositor.offerSeat();
        f.compositor.offerExtIdleNotify();
        f.start();
        QVERIFY(f.hasNotifications(1));
        f.compositor.sendIdled();
        QVERIFY(f.hasFigure(60));

        f.compositor.die();
        QVERIFY(f.hasFigure(0));
        // An enabled notifier would find its closed connection readable every time.
        QCoreApplication::processEvents();
        auto *dispatcher = QAbstractEventDispatcher::instance();
        for (int pass = 0; pass < 10; ++pass)
            QVERIFY(!dispatcher->processEvents(QEventLoop::AllEvents));
        f.clock.pass(1h);
        QCOMPARE(f.figure(), 0.0);
    }

    void aCompositorThatDiesBeforeItAnswers()
    {
        WaylandIdleFixture f;
        const int socket = f.compositor.connectClient();
        f.compositor.die();
        WaylandUserIdle userIdle(f.clock, WaylandDisplayPointer(wl_display_connect_to_fd(socket)));
        QCoreApplication::processEvents();
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
    }

    void noConnection()
    {
        const SettableClock clock;
        const WaylandUserIdle userIdle(clock, nullptr);
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
    }

    void theEndClosesTheConnection()
    {
        WaylandIdleFixture f;
        f.compositor.offerSeat();
        f.compositor.offerExtIdleNotify();
        f.start();
        QVERIFY(f.hasNotifications(1));
        f.userIdle.reset();
        QVERIFY(f.settles([&] { return !f.compositor.hasClient(); }));
        QVERIFY(f.compositor.notifications().empty());
    }
};

ORVANE_TEST(WaylandUserIdleTest, QCoreApplication)
#include "WaylandUserIdleTest.moc"
