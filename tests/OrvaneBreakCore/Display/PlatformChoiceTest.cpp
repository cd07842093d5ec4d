// SPDX-License-Identifier: GPL-3.0-or-later
#include "PlatformChoice.h"

#include "Support/FakeLayerShell.h"
#include "Support/RunningCompositor.h"
#include "Support/TestProgram.h"

#include <QTest>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

Q_DECLARE_METATYPE(CompositorAnswer)

/// The choice of the platform: from given facts, then with compositors of the test.
class PlatformChoiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        qunsetenv("QT_QPA_PLATFORM");
        qunsetenv("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT");
    }

    void choice_data()
    {
        QTest::addColumn<QString>("requested");
        QTest::addColumn<CompositorAnswer>("compositor");
        QTest::addColumn<bool>("x11");
        QTest::addColumn<QByteArray>("platform");
        const QString nothing;
        constexpr bool no = false;
        constexpr bool yes = true;
        QTest::newRow("sway, KDE") << nothing << CompositorAnswer::LayerShell << yes << QByteArray("wayland");
        QTest::newRow("sway without X")
            << nothing << CompositorAnswer::LayerShell << no << QByteArray("wayland");
        QTest::newRow("GNOME") << nothing << CompositorAnswer::Plain << yes << QByteArray("xcb");
        QTest::newRow("GNOME without X") << nothing << CompositorAnswer::Plain << no << QByteArray("wayland");
        QTest::newRow("X11") << nothing << CompositorAnswer::Absent << yes << QByteArray("xcb");
        QTest::newRow("no answer") << nothing << CompositorAnswer::Silent << yes << QByteArray("xcb");
        QTest::newRow("no answer, without X")
            << nothing << CompositorAnswer::Silent << no << QByteArray("wayland");
        QTest::newRow("connection handed over")
            << nothing << CompositorAnswer::Unasked << yes << QByteArray("wayland");
        QTest::newRow("no display") << nothing << CompositorAnswer::Absent << no << QByteArray();
        QTest::newRow("requested by the user")
            << u"xcb"_s << CompositorAnswer::LayerShell << yes << QByteArray();
    }

    void choice()
    {
        QFETCH(const QString, requested);
        QFETCH(const CompositorAnswer, compositor);
        QFETCH(const bool, x11);
        const PlatformChoice choice = choosePlatform({requested, compositor, x11});
        QTEST(choice.platform, "platform");
        QVERIFY(qstrlen(choice.reason) > 0);
    }

    void compositorIsAskedIfTheSessionNamesOneOrThereIsNoXServer()
    {
        QVERIFY(isCompositorWorthAsking(u"wayland-1"_s, u":0"_s));
        QVERIFY(isCompositorWorthAsking(u"wayland-1"_s, QString()));
        QVERIFY(isCompositorWorthAsking(QString(), QString()));
        QVERIFY(!isCompositorWorthAsking(QString(), u":0"_s));
    }

    void withoutADisplayThereIsNoPlatform()
    {
        QCOMPARE(askCompositor(10s), CompositorAnswer::Absent);
        QVERIFY(choosePlatform(findDisplayFacts(10s)).platform.isEmpty());
        QVERIFY(missingDisplay(findDisplayFacts(10s)));
    }

    void listOfPlatforms_data()
    {
        QTest::addColumn<QString>("list");
        QTest::addColumn<QString>("used");
        QTest::addColumn<bool>("isMissing");
        // There is a compositor and no X server.
        QTest::newRow("first") << u"wayland;xcb"_s << u"wayland"_s << false;
        QTest::newRow("second") << u"xcb;wayland-egl"_s << u"wayland-egl"_s << false;
        QTest::newRow("only") << u"xcb"_s << u"xcb"_s << true;
        QTest::newRow("all of one kind") << u"xcb;xcb:again"_s << u"xcb;xcb:again"_s << true;
        QTest::newRow("without a display") << u"xcb;offscreen:file=a"_s << u"offscreen:file=a"_s << false;
        QTest::newRow("unknown") << u"nonsense"_s << u"nonsense"_s << false;
    }

    void listOfPlatforms()
    {
        QFETCH(const QString, list);
        QFETCH(const bool, isMissing);
        const RunningCompositor running([](FakeCompositor &) {});
        qputenv("QT_QPA_PLATFORM", list.toUtf8());
        const DisplayFacts facts = findDisplayFacts(10s);
        QTEST(facts.requestedPlatform, "used");
        QCOMPARE(missingDisplay(facts).has_value(), isMissing);
        QVERIFY(choosePlatform(facts).platform.isEmpty());
    }

    void connectionThatIsHandedOverIsLeftAlone()
    {
        const RunningCompositor running([](FakeCompositor &) {});
        int sockets[2];
        QCOMPARE(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets), 0);
        qputenv("WAYLAND_SOCKET", QByteArray::number(sockets[0]));
        const DisplayFacts facts = findDisplayFacts(10s);
        QCOMPARE(facts.compositor, CompositorAnswer::Unasked);
        QVERIFY(!missingDisplay(facts));
        QVERIFY(qEnvironmentVariableIsSet("WAYLAND_SOCKET"));
        QVERIFY(fcntl(sockets[0], F_GETFD) >= 0);
        qunsetenv("WAYLAND_SOCKET");
        close(sockets[0]);
        close(sockets[1]);
    }

    void compositorWithTheDefaultNameIsAskedOnlyWithoutAnXServer()
    {
        RunningCompositor running([](FakeCompositor &) {});
        QCOMPARE(qEnvironmentVariable("WAYLAND_DISPLAY"), u"wayland-0"_s);
        qunsetenv("WAYLAND_DISPLAY");
        QCOMPARE(choosePlatform(findDisplayFacts(10s)).platform, QByteArray("wayland"));
        // There is no such server.
        qputenv("DISPLAY", ":987654");
        QVERIFY(choosePlatform(findDisplayFacts(10s)).platform.isEmpty());
        qunsetenv("DISPLAY");
    }

    void compositorAnswers_data()
    {
        QTest::addColumn<bool>("isShellOffered");
        QTest::addColumn<CompositorAnswer>("answer");
        QTest::newRow("with") << true << CompositorAnswer::LayerShell;
        QTest::newRow("without") << false << CompositorAnswer::Plain;
    }

    void compositorAnswers()
    {
        QFETCH(const bool, isShellOffered);
        std::optional<FakeLayerShell> shell;
        const RunningCompositor running([&](FakeCompositor &compositor) {
            shell.emplace(compositor);
            shell->offer(isShellOffered);
        });
        QTEST(askCompositor(10s), "answer");
        QCOMPARE(choosePlatform(findDisplayFacts(10s)).platform, QByteArray("wayland"));
    }

    void compositorWithoutAnAnswerIsSilent()
    {
        RunningCompositor running([](FakeCompositor &) {});
        running.stop();
        QCOMPARE(askCompositor(20ms), CompositorAnswer::Silent);
    }

    void environmentHasTheChoiceUntilItIsDestroyed()
    {
        {
            const PlatformEnvironment environment({"xcb", ""});
            QCOMPARE(qgetenv("QT_QPA_PLATFORM"), QByteArray("xcb"));
            QCOMPARE(qgetenv("QT_XCB_NO_MITSHM"), QByteArray("1"));
            QCOMPARE(qgetenv("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT"), QByteArray("1"));
        }
        QVERIFY(!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"));
        QVERIFY(!qEnvironmentVariableIsSet("QT_XCB_NO_MITSHM"));
    }

    void environmentOfTheUserIsKept()
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT", "0");
        {
            const PlatformEnvironment environment(choosePlatform(findDisplayFacts(10s)));
            QCOMPARE(qgetenv("QT_QPA_PLATFORM"), QByteArray("offscreen"));
        }
        QCOMPARE(qgetenv("QT_QPA_PLATFORM"), QByteArray("offscreen"));
        QCOMPARE(qgetenv("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT"), QByteArray("0"));
    }
};

ORVANE_TEST(PlatformChoiceTest, QCoreApplication)
#include "PlatformChoiceTest.moc"
