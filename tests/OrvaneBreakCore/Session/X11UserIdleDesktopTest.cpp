// SPDX-License-Identifier: GPL-3.0-or-later
#include "DesktopUserIdle.h"
#include "SettableClock.h"
#include "Support/TestProgram.h"
#include "VirtualXServer.h"
#include "X11UserIdle.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// The idle time on a real X server, with real input.
class X11UserIdleDesktopTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void growsAndIsResetByInput_data()
    {
        QTest::addColumn<QStringList>("input");
        QTest::newRow("pointer") << QStringList{u"mousemove_relative"_s, u"3"_s, u"4"_s};
        QTest::newRow("button") << QStringList{u"click"_s, u"1"_s};
        QTest::newRow("wheel") << QStringList{u"click"_s, u"4"_s};
        QTest::newRow("key") << QStringList{u"key"_s, u"a"_s};
        QTest::newRow("modifier") << QStringList{u"key"_s, u"Shift_L"_s};
    }

    void growsAndIsResetByInput()
    {
        QFETCH(QStringList, input);
        const VirtualXServer server;
        QVERIFY(server.isRunning);
        const X11UserIdle userIdle;
        QVERIFY(userIdle.isOffered());
        QTRY_VERIFY(userIdle.secondsSinceLastInput().front() > 0.3);
        const double before = userIdle.secondsSinceLastInput().front();
        QTRY_VERIFY(userIdle.secondsSinceLastInput().front() > before + 0.1);
        QCOMPARE(QProcess::execute(u"xdotool"_s, input), 0);
        QTRY_VERIFY(userIdle.secondsSinceLastInput().front() < before);
    }

    void isChosenOnX11()
    {
        const VirtualXServer server;
        QVERIFY(server.isRunning);
        qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
        const SettableClock clock;
        const DesktopUserIdle idle(clock);
        QCOMPARE(idle.source(), UserIdleSource::XScreenSaver);
        QTRY_VERIFY(idle.secondsSinceLastInput().front() > 0);
    }

    void serverWithoutTheExtension()
    {
        const VirtualXServer server({u"-extension"_s, u"MIT-SCREEN-SAVER"_s});
        QVERIFY(server.isRunning);
        const X11UserIdle userIdle;
        QVERIFY(!userIdle.isOffered());
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
    }

    void serverThatEnds()
    {
        VirtualXServer server;
        QVERIFY(server.isRunning);
        const X11UserIdle userIdle;
        QTRY_VERIFY(userIdle.secondsSinceLastInput().front() > 0);
        server.stop();
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
    }
};

ORVANE_TEST(X11UserIdleDesktopTest, QCoreApplication)
#include "X11UserIdleDesktopTest.moc"
