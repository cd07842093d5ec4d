// SPDX-License-Identifier: GPL-3.0-or-later
#include "SessionLock.h"

#include "Support/FakeBusService.h"
#include "Support/SessionBusDaemon.h"
#include "Support/TestProgram.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QEventLoop>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString saver = u"org.freedesktop.ScreenSaver"_s;
const QString gnome = u"org.gnome.ScreenSaver"_s;
const QString login = u"org.freedesktop.login1"_s;
const QString loginSession = u"org.freedesktop.login1.Session"_s;
const QString sessionPath = u"/org/freedesktop/login1/session/_32"_s;

QVariant wrapped(bool value)
{
    return QVariant::fromValue(QDBusVariant(value));
}

/// How the login service refers to a session.
struct SessionReference
{
    QString name;
    QDBusObjectPath path;
};

QDBusArgument &operator<<(QDBusArgument &argument, const SessionReference &reference)
{
    argument.beginStructure();
    argument << reference.name << reference.path;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, SessionReference & /*reference*/)
{
    return argument;
}

} // namespace

Q_DECLARE_METATYPE(SessionReference)

/// The lock state that services of the test's on two buses of the test's report.
class SessionLockTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<SessionBusDaemon> m_session;
    std::unique_ptr<SessionBusDaemon> m_system;

    [[nodiscard]] std::unique_ptr<SessionLock> makeLock() const
    {
        return std::make_unique<SessionLock>(
            QDBusConnection::connectToBus(m_session->address(), u"session"_s),
            QDBusConnection::connectToBus(m_system->address(), u"system"_s));
    }

    [[nodiscard]] std::unique_ptr<FakeBusService> makeLogin(bool isLocked) const
    {
        return std::make_unique<FakeBusService>(
            m_system->address(), login,
            QHash<QString, QVariant>{
                {u"GetSessionByPID"_s, QVariant::fromValue(QDBusObjectPath(sessionPath))},
                {u"Get"_s, wrapped(isLocked)}});
    }

private Q_SLOTS:
    void init()
    {
        qunsetenv("XDG_SESSION_ID");
        m_session = std::make_unique<SessionBusDaemon>();
        m_system = std::make_unique<SessionBusDaemon>();
    }

    static void cleanup()
    {
        QDBusConnection::disconnectFromBus(u"session"_s);
        QDBusConnection::disconnectFromBus(u"system"_s);
    }

    void isUnlockedWithoutAnyReport()
    {
        const auto lock = makeLock();
        QVERIFY(!lock->isLocked());
        const SessionLock withoutBuses(QDBusConnection(u"none"_s), QDBusConnection(u"none"_s));
        QVERIFY(!withoutBuses.isLocked());
    }

    void learnsOfALockFromBeforeTheStart()
    {
        const FakeBusService service(m_session->address(), gnome, {{u"GetActive"_s, true}});
        QVERIFY(service.isRegistered);
        const auto lock = makeLock();
        QTRY_VERIFY(lock->isLocked());
    }

    void followsTheLockScreen()
    {
        const FakeBusService service(m_session->address(), saver, {{u"GetActive"_s, false}});
        const auto lock = makeLock();
        QTRY_VERIFY(service.calls.size() >= 2);
        service.announce(u"/org/freedesktop/ScreenSaver"_s, saver, u"ActiveChanged"_s, {true});
        QTRY_VERIFY(lock->isLocked());
        service.announce(u"/org/freedesktop/ScreenSaver"_s, saver, u"ActiveChanged"_s, {false});
        QTRY_VERIFY(!lock->isLocked());
    }

    void aLockScreenThatDiesWhileActive()
    {
        auto service = std::make_unique<FakeBusService>(m_session->address(), saver,
                                                        QHash<QString, QVariant>{{u"GetActive"_s, true}});
        const auto lock = makeLock();
        QTRY_VERIFY(lock->isLocked());
        service.reset();
        QTRY_VERIFY(!lock->isLocked());
    }

    void aLockScreenThatReturns_data()
    {
        QTest::addColumn<bool>("isLocked");
        QTest::newRow("locked") << true;
        QTest::newRow("unlocked") << false;
    }

    void aLockScreenThatReturns()
    {
        QFETCH(bool, isLocked);
        auto service = std::make_unique<FakeBusService>(
            m_session->address(), gnome, QHash<QString, QVariant>{{u"GetActive"_s, !isLocked}});
        const auto lock = makeLock();
        QTRY_COMPARE(lock->isLocked(), !isLocked);
        QTRY_VERIFY(service->calls.contains(u"GetActive"_s));
        service.reset();
        service = std::make_unique<FakeBusService>(m_session->address(), gnome,
                                                   QHash<QString, QVariant>{{u"GetActive"_s, isLocked}});
        QTRY_VERIFY(service->calls.contains(u"GetActive"_s));
        QTRY_COMPARE(lock->isLocked(), isLocked);
        service->announce(u"/org/gnome/ScreenSaver"_s, gnome, u"ActiveChanged"_s, {!isLocked});
        QTRY_COMPARE(lock->isLocked(), !isLocked);
    }

    void oneLockScreenThatDiesLeavesTheOtherLocked()
    {
        auto dying = std::make_unique<FakeBusService>(m_session->address(), saver,
                                                      QHash<QString, QVariant>{{u"GetActive"_s, true}});
        const FakeBusService other(m_session->address(), gnome, {{u"GetActive"_s, true}});
        const auto lock = makeLock();
        QTRY_VERIFY(dying->calls.size() >= 2 && !other.calls.isEmpty());
        QTRY_VERIFY(lock->isLocked());
        dying.reset();
        // Once its heir has answered, the death has been handled.
        const FakeBusService heir(m_session->address(), saver, {{u"GetActive"_s, false}});
        QTRY_VERIFY(heir.calls.size() >= 2);
        QTRY_VERIFY(lock->findChildren<QDBusPendingCallWatcher *>().isEmpty());
        QVERIFY(lock->isLocked());
        other.announce(u"/org/gnome/ScreenSaver"_s, gnome, u"ActiveChanged"_s, {false});
        QTRY_VERIFY(!lock->isLocked());
    }

    void theLoginServiceThatRestarts()
    {
        auto service = makeLogin(true);
        const auto lock = makeLock();
        QTRY_VERIFY(lock->isLocked());
        service.reset();
        QTRY_VERIFY(!lock->isLocked());
        service = makeLogin(true);
        QTRY_VERIFY(lock->isLocked());
        service->announce(sessionPath, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s,
                          {loginSession, QVariantMap{{u"LockedHint"_s, false}}, QStringList()});
        QTRY_VERIFY(!lock->isLocked());
    }

    void followsTheLoginService()
    {
        const auto service = makeLogin(false);
        const auto lock = makeLock();
        QTRY_VERIFY(service->calls.contains(u"Get"_s));
        service->announce(sessionPath, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s,
                          {loginSession, QVariantMap{{u"IdleHint"_s, true}}, QStringList()});
        service->announce(sessionPath, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s,
                          {loginSession, QVariantMap{{u"LockedHint"_s, true}}, QStringList()});
        QTRY_VERIFY(lock->isLocked());
        service->announce(sessionPath, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s,
                          {loginSession, QVariantMap{{u"LockedHint"_s, false}}, QStringList()});
        QTRY_VERIFY(!lock->isLocked());
    }

    void withoutASessionOfItsOwnTheUsersDisplaySessionCounts_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isLocked");
        QTest::newRow("session") << u"2"_s << true;
        QTest::newRow("none") << QString() << false;
    }

    void withoutASessionOfItsOwnTheUsersDisplaySessionCounts()
    {
        QFETCH(const QString, name);
        qDBusRegisterMetaType<SessionReference>();
        const SessionReference reference{name, QDBusObjectPath(name.isEmpty() ? u"/"_s : sessionPath)};
        const FakeBusService service(
            m_system->address(), login,
            {{u"Get Display"_s, QVariant::fromValue(QDBusVariant(QVariant::fromValue(reference)))},
             {u"Get LockedHint"_s, wrapped(true)}});
        const auto lock = makeLock();
        QTRY_VERIFY(service.calls.contains(u"Get"_s));
        QTRY_VERIFY(lock->findChildren<QDBusPendingCallWatcher *>().isEmpty());
        QTEST(lock->isLocked(), "isLocked");
    }

    void aMachineThatFallsAsleepIsLockedUntilItResumes()
    {
        auto service = makeLogin(false);
        const auto lock = makeLock();
        QTRY_VERIFY(service->calls.contains(u"Get"_s));
        const auto announce = [&service](bool isComing) {
            service->announce(u"/org/freedesktop/login1"_s, u"org.freedesktop.login1.Manager"_s,
                              u"PrepareForSleep"_s, {isComing});
        };
        announce(true);
        QTRY_VERIFY(lock->isLocked());
        announce(false);
        QTRY_VERIFY(!lock->isLocked());
        announce(true);
        QTRY_VERIFY(lock->isLocked());
        service.reset();
        QTRY_VERIFY(!lock->isLocked());
    }

    void isLockedWhileAnyServiceReportsIt()
    {
        const auto service = makeLogin(true);
        const FakeBusService screen(m_session->address(), saver, {{u"GetActive"_s, true}});
        const auto lock = makeLock();
        QTRY_VERIFY(lock->isLocked());
        QTRY_VERIFY(service->calls.contains(u"Get"_s) && screen.calls.size() >= 2);
        screen.announce(u"/ScreenSaver"_s, saver, u"ActiveChanged"_s, {false});
        service->announce(sessionPath, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s,
                          {loginSession, QVariantMap{{u"LockedHint"_s, false}}, QStringList()});
        QTRY_VERIFY(!lock->isLocked());
    }

    void odditiesChangeNothing()
    {
        const FakeBusService service(m_session->address(), saver, {{u"GetActive"_s, u"perhaps"_s}});
        const auto lock = makeLock();
        QEventLoop seen;
        QDBusConnection bus(u"session"_s);
        bus.connect(saver, u"/seen"_s, saver, u"Seen"_s, &seen, SLOT(quit()));
        QVERIFY(bus.interface()->isServiceRegistered(saver));
        QTRY_VERIFY(lock->findChildren<QDBusPendingCallWatcher *>().isEmpty());
        QCOMPARE(service.calls.count(u"GetActive"_s), 2);
        QVERIFY(!lock->isLocked());
        service.announce(u"/org/freedesktop/ScreenSaver"_s, saver, u"ActiveChanged"_s, {u"true"_s});
        service.announce(u"/elsewhere"_s, saver, u"ActiveChanged"_s, {true});
        // Announcements arrive in their order, and this one after those above.
        service.announce(u"/seen"_s, saver, u"Seen"_s, {});
        seen.exec();
        QVERIFY(!lock->isLocked());
    }
};

ORVANE_TEST(SessionLockTest, QCoreApplication)
#include "SessionLockTest.moc"
