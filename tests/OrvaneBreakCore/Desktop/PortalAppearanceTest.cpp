// SPDX-License-Identifier: GPL-3.0-or-later
#include "PortalAppearance.h"

#include "FakePortal.h"
#include "HouseStyle.h"
#include "Palette.h"
#include "Support/SessionBusDaemon.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QPalette>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString appearance = u"org.freedesktop.appearance"_s;
const QString colorScheme = u"color-scheme"_s;

bool isDark()
{
    const QPalette palette = QApplication::palette();
    return palette.window().color().lightness() < palette.windowText().color().lightness();
}

} // namespace

/// Light and dark with a fake portal on a private bus.
class PortalAppearanceTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<SessionBusDaemon> m_daemon;

    [[nodiscard]] QDBusConnection bus() const
    {
        return QDBusConnection::connectToBus(m_daemon->address(), u"program"_s);
    }

private Q_SLOTS:
    static void initTestCase() { failOnUnexpectedWarnings(); }

    void init()
    {
        QApplication::setPalette(QPalette());
        m_daemon = std::make_unique<SessionBusDaemon>();
        QVERIFY(bus().isConnected());
    }

    void cleanup()
    {
        QDBusConnection::disconnectFromBus(u"program"_s);
        m_daemon.reset();
    }

    static void queriesAtTheBeginning_data()
    {
        QTest::addColumn<unsigned>("scheme");
        QTest::addColumn<bool>("dark");
        QTest::newRow("no preference") << 0U << false;
        QTest::newRow("dark") << 1U << true;
        QTest::newRow("light") << 2U << false;
        QTest::newRow("a scheme of the future") << 77U << false;
    }

    void queriesAtTheBeginning()
    {
        QFETCH(const unsigned, scheme);
        const FakePortal portal(m_daemon->address(), scheme);
        QVERIFY(portal.isRegistered);
        const PortalAppearance program(bus());
        QTEST(isDark(), "dark");
    }

    void followsChanges()
    {
        const FakePortal portal(m_daemon->address(), 1);
        const PortalAppearance program(bus());
        QVERIFY(isDark());
        portal.announce(appearance, colorScheme, 2U);
        QTRY_VERIFY(!isDark());
        portal.announce(appearance, colorScheme, 1U);
        QTRY_VERIFY(isDark());
        portal.announce(appearance, colorScheme, 0U);
        QTRY_VERIFY(!isDark());
    }

    void highContrastIsBlackAndWhite()
    {
        FakePortal portal(m_daemon->address(), 1);
        portal.object.contrast = 1;
        const PortalAppearance program(bus());
        QCOMPARE(QApplication::palette().window().color(), QColor(Qt::black));
        QCOMPARE(tertiaryLabelColor().resolved(QApplication::palette()), QColor(Qt::white));
        portal.announce(appearance, colorScheme, 2U);
        QTRY_COMPARE(QApplication::palette().window().color(), QColor(Qt::white));
        portal.announce(appearance, u"contrast"_s, 0U);
        QTRY_COMPARE(QApplication::palette().window().color(), lightPalette().window().color());
    }

    void theFontIsTheDesktops_data()
    {
        QTest::addColumn<QByteArray>("font");
        QTest::addColumn<QString>("family");
        QTest::addColumn<double>("size");
        QTest::newRow("GNOME") << QByteArray("DejaVu Serif Condensed 11.5") << u"DejaVu Serif Condensed"_s
                               << 11.5;
        QTest::newRow("KDE") << QByteArray("DejaVu Serif,10,-1,5,50,0,0,0,0,0") << u"DejaVu Serif"_s << 10.0;
        QTest::newRow("a size too large") << QByteArray("DejaVu Serif 900") << u"DejaVu Serif"_s << 32.0;
        QTest::newRow("no font") << QByteArray("x") << QApplication::font().family()
                                 << QApplication::font().pointSizeF();
    }

    void theFontIsTheDesktops()
    {
        QFETCH(const QByteArray, font);
        const QFont before = QApplication::font();
        FakePortal portal(m_daemon->address(), 1);
        portal.object.font = font.constData();
        const PortalAppearance program(bus());
        QTEST(systemFont(13, QFont::Normal).family(), "family");
        QCOMPARE(systemFont(13, QFont::Normal).pixelSize(), 13);
        QTEST(QApplication::font().pointSizeF(), "size");
        QApplication::setFont(before);
    }

    void ignoresOtherSettings()
    {
        const FakePortal portal(m_daemon->address(), 1);
        const PortalAppearance program(bus());
        portal.announce(u"org.gnome.desktop.interface"_s, colorScheme, u"prefer-light"_s);
        portal.announce(appearance, u"accent-color"_s, 2U);
        // Announcements arrive in order, so the earlier ones have been handled when the last one is.
        QPalette mark = QApplication::palette();
        mark.setColor(QPalette::Window, QColor(1, 2, 3));
        QApplication::setPalette(mark);
        portal.announce(appearance, colorScheme, 1U);
        QTRY_VERIFY(QApplication::palette().window().color() != QColor(1, 2, 3));
        QVERIFY(isDark());
    }

    void isLightWithoutAPortal()
    {
        const PortalAppearance program(bus());
        QCOMPARE(QApplication::palette().window().color(), lightPalette().window().color());
    }

    static void isLightWithoutABus()
    {
        const PortalAppearance program(QDBusConnection(u"no such connection"_s));
        QCOMPARE(QApplication::palette().window().color(), lightPalette().window().color());
    }
};

ORVANE_TEST(PortalAppearanceTest, QApplication)
#include "PortalAppearanceTest.moc"
