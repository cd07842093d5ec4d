// SPDX-License-Identifier: GPL-3.0-or-later
#include "DesktopUserIdle.h"

#include "FakeIdleMonitor.h"
#include "SettableClock.h"
#include "Support/RunningCompositor.h"
#include "Support/SessionBusDaemon.h"
#include "Support/TestProgram.h"

#include <QTest>

/// The choice of the source: by given facts, then by the facts of a desktop of the test's.
class DesktopUserIdleTest : public QObject
{
    Q_OBJECT

    SessionBusDaemon m_daemon;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(!m_daemon.address().isEmpty());
        // Before anything has connected to the session bus.
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_daemon.address().toLatin1());
    }

    void choice_data()
    {
        QTest::addColumn<bool>("wayland");
        QTest::addColumn<bool>("ext");
        QTest::addColumn<bool>("kde");
        QTest::addColumn<bool>("mutter");
        QTest::addColumn<bool>("muffin");
        QTest::addColumn<bool>("x11");
        QTest::addColumn<QByteArray>("name");
        constexpr bool no = false;
        constexpr bool yes = true;
        using Name = QByteArray;
        QTest::newRow("KDE Wayland") << yes << yes << yes << no << no << no << Name("ext-idle-notify-v1");
        QTest::newRow("newer") << yes << yes << no << no << no << no << Name("ext-idle-notify-v1");
        QTest::newRow("older") << yes << no << yes << no << no << no << Name("org_kde_kwin_idle");
        QTest::newRow("GNOME Wayland")
            << yes << no << no << yes << no << no << Name("org.gnome.Mutter.IdleMonitor");
        QTest::newRow("Cinnamon Wayland")
            << yes << no << no << no << yes << yes << Name("org.cinnamon.Muffin.IdleMonitor");
        QTest::newRow("Cinnamon X11") << no << no << no << no << yes << yes << Name("XScreenSaver extension");
        QTest::newRow("XWayland") << yes << no << no << no << no << yes << Name("none");
        QTest::newRow("XWayland on GNOME")
            << yes << no << no << yes << no << yes << Name("org.gnome.Mutter.IdleMonitor");
        QTest::newRow("all on Wayland")
            << yes << yes << yes << yes << no << yes << Name("ext-idle-notify-v1");
        QTest::newRow("older with all") << yes << no << yes << yes << no << yes << Name("org_kde_kwin_idle");
        QTest::newRow("bare Wayland") << yes << no << no << no << no << no << Name("none");
        QTest::newRow("X11") << no << no << no << no << no << yes << Name("XScreenSaver extension");
        QTest::newRow("GNOME X11") << no << no << no << yes << no << yes << Name("XScreenSaver extension");
        QTest::newRow("bare GNOME X11")
            << no << no << no << yes << no << no << Name("org.gnome.Mutter.IdleMonitor");
        QTest::newRow("protocols without a session")
            << no << yes << yes << no << no << yes << Name("XScreenSaver extension");
        QTest::newRow("bare X11") << no << no << no << no << no << no << Name("none");
    }

    void choice()
    {
        QFETCH(bool, wayland);
        QFETCH(bool, ext);
        QFETCH(bool, kde);
        QFETCH(bool, mutter);
        QFETCH(bool, muffin);
        QFETCH(bool, x11);
        const UserIdleSource source = chooseUserIdleSource({wayland, ext, kde, mutter, muffin, x11});
        QTEST(QByteArray(userIdleSourceName(source)), "name");
    }

    void withoutAnyDesktop()
    {
        const SettableClock clock;
        const DesktopUserIdle idle(clock);
        QCOMPARE(idle.source(), UserIdleSource::None);
        QVERIFY(idle.secondsSinceLastInput() == InputIdleSeconds{});
    }

    void onACompositor_data()
    {
        QTest::addColumn<bool>("ext");
        QTest::addColumn<bool>("kde");
        QTest::addColumn<bool>("mutter");
        QTest::addColumn<UserIdleSource>("source");
        QTest::newRow("both") << true << true << true << UserIdleSource::ExtIdleNotify;
        QTest::newRow("kde") << false << true << true << UserIdleSource::KdeIdle;
        QTest::newRow("mutter") << false << false << true << UserIdleSource::MutterIdleMonitor;
        QTest::newRow("nothing") << false << false << false << UserIdleSource::None;
    }

    void onACompositor()
    {
        QFETCH(bool, ext);
        QFETCH(bool, kde);
        QFETCH(bool, mutter);
        const RunningCompositor compositor([&](FakeCompositor &fake) {
            fake.offerSeat();
            if (kde)
                fake.offerKdeIdle();
            if (ext)
                fake.offerExtIdleNotify();
            // Something else comes last.
            fake.offerSeat();
        });
        std::unique_ptr<FakeIdleMonitor> monitor;
        if (mutter) {
            monitor = std::make_unique<FakeIdleMonitor>(m_daemon.address());
            QVERIFY(monitor->isRegistered);
            monitor->object.milliseconds = 7'000;
        }
        const SettableClock clock;
        const DesktopUserIdle idle(clock);
        QTEST(idle.source(), "source");
        const bool isProtocol = ext || kde;
        QCOMPARE(idle.resolution(), std::chrono::seconds(isProtocol ? 60 : 0));
        const double expected = idle.source() == UserIdleSource::MutterIdleMonitor ? 7.0 : 0.0;
        QCOMPARE(idle.secondsSinceLastInput().front(), expected);
    }

    void whatWasNotThereInTimeIsUsedOnceItIs()
    {
        RunningCompositor running([](FakeCompositor &fake) { fake.offerSeat(); });
        const SettableClock clock;
        const DesktopUserIdle idle(clock);
        QCOMPARE(idle.source(), UserIdleSource::None);
        const FakeIdleMonitor monitor(m_daemon.address());
        QCOMPARE(idle.source(), UserIdleSource::MutterIdleMonitor);
        running.stop();
        running.compositor().offerExtIdleNotify();
        running.compositor().pump();
        QTRY_COMPARE(idle.source(), UserIdleSource::ExtIdleNotify);
    }
};

ORVANE_TEST(DesktopUserIdleTest, QCoreApplication)
#include "DesktopUserIdleTest.moc"
