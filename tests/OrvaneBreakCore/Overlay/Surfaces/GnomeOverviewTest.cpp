// SPDX-License-Identifier: GPL-3.0-or-later
#include "GnomeOverview.h"

#include "Support/FakeBusService.h"
#include "Support/SessionBusDaemon.h"
#include "Support/TestProgram.h"

#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString shell = u"org.gnome.Shell"_s;
const QString properties = u"org.freedesktop.DBus.Properties"_s;

QVariant wrapped(bool value)
{
    return QVariant::fromValue(QDBusVariant(value));
}

} // namespace

/// The overview of a shell of the test's.
class GnomeOverviewTest : public QObject
{
    Q_OBJECT

    SessionBusDaemon m_daemon;
    std::unique_ptr<GnomeOverview> m_overview;

    void announce(const FakeBusService &service, const QString &interface, const QString &property) const
    {
        service.announce(u"/org/gnome/Shell"_s, properties, u"PropertiesChanged"_s,
                         {interface, QVariantMap{{property, true}}, QStringList()});
    }

private Q_SLOTS:
    void init()
    {
        m_overview =
            std::make_unique<GnomeOverview>(QDBusConnection::connectToBus(m_daemon.address(), u"program"_s));
    }

    void cleanup()
    {
        m_overview.reset();
        QDBusConnection::disconnectFromBus(u"program"_s);
    }

    void closesAnOpenOneAndWhatOpensLater()
    {
        const FakeBusService service(m_daemon.address(), shell,
                                     {{u"Get"_s, wrapped(true)}, {u"Set"_s, QString()}});
        m_overview->keepClosed();
        QTRY_COMPARE(service.calls.count(u"Set"_s), 1);
        announce(service, shell, u"OverviewActive"_s);
        QTRY_COMPARE(service.calls.count(u"Set"_s), 2);
    }

    void leavesAClosedOneAndOtherPropertiesAlone()
    {
        const FakeBusService service(m_daemon.address(), shell,
                                     {{u"Get"_s, wrapped(false)}, {u"Set"_s, QString()}});
        m_overview->keepClosed();
        QTRY_VERIFY(service.calls.contains(u"Get"_s));
        QTRY_VERIFY(m_overview->findChildren<QDBusPendingCallWatcher *>().isEmpty());
        announce(service, shell, u"Mode"_s);
        announce(service, u"org.gnome.Shell.Other"_s, u"OverviewActive"_s);
        // Announcements arrive in their order.
        announce(service, shell, u"OverviewActive"_s);
        QTRY_VERIFY(service.calls.contains(u"Set"_s));
        QCOMPARE(service.calls.count(u"Set"_s), 1);
    }

    void givesUpAfterTwentyTimes()
    {
        const FakeBusService service(m_daemon.address(), shell,
                                     {{u"Get"_s, wrapped(true)}, {u"Set"_s, QString()}});
        m_overview->keepClosed();
        for (int opened = 0; opened < 30; ++opened)
            announce(service, shell, u"OverviewActive"_s);
        QTRY_COMPARE(service.calls.count(u"Set"_s), 20);
        QTest::qWait(50);
        QCOMPARE(service.calls.count(u"Set"_s), 20);
    }

    void leavesItAloneAfterTheBreak()
    {
        const FakeBusService service(m_daemon.address(), shell,
                                     {{u"Get"_s, wrapped(true)}, {u"Set"_s, QString()}});
        m_overview->keepClosed();
        m_overview->leaveAlone();
        QTRY_VERIFY(m_overview->findChildren<QDBusPendingCallWatcher *>().isEmpty());
        announce(service, shell, u"OverviewActive"_s);
        QTest::qWait(50);
        QVERIFY(!service.calls.contains(u"Set"_s));
    }

    static void withoutABusNothingHappens()
    {
        GnomeOverview overview{QDBusConnection(u"none"_s)};
        overview.keepClosed();
        QVERIFY(overview.findChildren<QDBusPendingCallWatcher *>().isEmpty());
    }
};

ORVANE_TEST(GnomeOverviewTest, QCoreApplication)
#include "GnomeOverviewTest.moc"
