// SPDX-License-Identifier: GPL-3.0-or-later
#include "DiagnosticReport.h"

#include "Support/TestProgram.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// The diagnostic report as a function of the facts.
class DiagnosticReportTest : public QObject
{
    Q_OBJECT

    static DiagnosticFacts bareFacts()
    {
        DiagnosticFacts facts;
        facts.version = u"1.2.3"_s;
        facts.toolkitVersion = u"6.5.0"_s;
        facts.toolkitVersionOfBuild = u"6.4.2"_s;
        facts.system = u"Debian 12"_s;
        facts.idleSource = u"none"_s;
        return facts;
    }

private Q_SLOTS:
    void aDesktopWithEverything()
    {
        DiagnosticFacts facts = bareFacts();
        facts.sessionType = u"wayland"_s;
        facts.currentDesktop = u"KDE"_s;
        facts.display.compositor = CompositorAnswer::LayerShell;
        facts.idleSource = u"ext-idle-notify-v1"_s;
        facts.hasSessionBus = true;
        facts.hasTrayHost = true;
        facts.portalVersion = 1;
        facts.portalScheme = 1;
        QCOMPARE(diagnosticReport(facts),
                 u"OrvaneBreak 1.2.3\n"
                 "  Qt                6.5.0, built with 6.4.2\n"
                 "  System            Debian 12\n"
                 "  Session type      wayland\n"
                 "  Desktop           KDE\n"
                 "  Platform plugin   wayland, because the compositor offers a layer "
                 "shell\n"
                 "  Overlay           layer surfaces\n"
                 "  Idle time         ext-idle-notify-v1\n"
                 "  Session bus       present\n"
                 "  Tray host         present\n"
                 "  Settings portal   version 1, color scheme: dark\n"_s);
    }

    void nothingAtAll()
    {
        QCOMPARE(diagnosticReport(bareFacts()), u"OrvaneBreak 1.2.3\n"
                                                "  Qt                6.5.0, built with 6.4.2\n"
                                                "  System            Debian 12\n"
                                                "  Session type      (not set)\n"
                                                "  Desktop           (not set)\n"
                                                "  Platform plugin   none, because there is no display\n"
                                                "  Overlay           none without a display\n"
                                                "  Idle time         none\n"
                                                "  Session bus       absent\n"
                                                "  Tray host         unknown without a session bus\n"
                                                "  Settings portal   unknown without a session bus\n"_s);
    }

    void controlCharactersAreReplaced()
    {
        DiagnosticFacts facts = bareFacts();
        facts.currentDesktop = u"two\nlines and \x1b[2J"_s;
        QVERIFY(diagnosticReport(facts).contains(u"  Desktop           two lines and  [2J\n"_s));
    }

    void aBusWithoutServices()
    {
        DiagnosticFacts facts = bareFacts();
        facts.hasSessionBus = true;
        const QString report = diagnosticReport(facts);
        QVERIFY(report.contains(u"Tray host         absent, and no watcher is running\n"_s));
        QVERIFY(report.contains(u"Settings portal   absent\n"_s));
    }

    void aBusThatDoesNotAnswer()
    {
        DiagnosticFacts facts = bareFacts();
        facts.isSessionBusSilent = true;
        QVERIFY(diagnosticReport(facts).contains(u"Session bus       does not answer\n"_s));
    }

    void colorSchemes()
    {
        DiagnosticFacts facts = bareFacts();
        facts.hasSessionBus = true;
        facts.portalVersion = 1;
        const auto expect = [&](std::optional<uint> scheme, const QString &text) {
            facts.portalScheme = scheme;
            QVERIFY(diagnosticReport(facts).contains(u"color scheme: "_s + text + u'\n'));
        };
        expect(std::nullopt, u"none"_s);
        expect(0, u"no preference"_s);
        expect(1, u"dark"_s);
        expect(2, u"light"_s);
        expect(3, u"no preference"_s);
    }

    void overlayKinds_data()
    {
        QTest::addColumn<QString>("requested");
        QTest::addColumn<CompositorAnswer>("compositor");
        QTest::addColumn<bool>("isX11Reachable");
        QTest::addColumn<QString>("kind");
        const QString layers = u"layer surfaces"_s;
        const QString bypassing = u"windows that bypass the window manager"_s;
        const QString fullScreen = u"full-screen windows"_s;
        QTest::newRow("layer shell") << QString() << CompositorAnswer::LayerShell << true << layers;
        QTest::newRow("X11") << QString() << CompositorAnswer::Absent << true << bypassing;
        QTest::newRow("X11 in Wayland") << QString() << CompositorAnswer::Plain << true << bypassing;
        QTest::newRow("plain Wayland") << QString() << CompositorAnswer::Plain << false << fullScreen;
        QTest::newRow("Wayland requested") << u"wayland"_s << CompositorAnswer::LayerShell << false << layers;
        QTest::newRow("plain Wayland requested")
            << u"wayland-egl"_s << CompositorAnswer::Plain << false << fullScreen;
        QTest::newRow("connection handed over")
            << QString() << CompositorAnswer::Unasked << true
            << u"layer surfaces if the compositor offers a layer shell, otherwise full-screen windows"_s;
        QTest::newRow("X11 requested") << u"xcb"_s << CompositorAnswer::Absent << false << bypassing;
        QTest::newRow("another platform requested")
            << u"offscreen"_s << CompositorAnswer::Absent << false << fullScreen;
    }

    void overlayKinds()
    {
        QFETCH(const QString, requested);
        QFETCH(const CompositorAnswer, compositor);
        QFETCH(const bool, isX11Reachable);
        QTEST(overlayKind({requested, compositor, isX11Reachable}), "kind");
    }
};

ORVANE_TEST(DiagnosticReportTest, QCoreApplication)
#include "DiagnosticReportTest.moc"
