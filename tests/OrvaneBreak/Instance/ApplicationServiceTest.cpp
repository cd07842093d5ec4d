// SPDX-License-Identifier: GPL-3.0-or-later
#include "ApplicationService.h"

#include "Support/SessionBusDaemon.h"
#include "Support/TestProgram.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString applicationId = u"ch.example.Eyes-Test"_s;
const QString objectPath = u"/ch/example/Eyes_Test"_s;

} // namespace

/// The first instance is in this process; each second start is this program again, on a private session bus.
class ApplicationServiceTest : public QObject
{
    Q_OBJECT

    SessionBusDaemon m_bus;

    static QProcess *startSecond(const QString &action, const QString &token = {})
    {
        auto *process = new QProcess(QCoreApplication::instance());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_ACTIVATION_TOKEN"_s, token);
        process->setProcessEnvironment(environment);
        process->start(QCoreApplication::applicationFilePath(),
                       {u"ApplicationServiceTest"_s, u"--second"_s, action});
        return process;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(!m_bus.address().isEmpty());
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().toLatin1());
    }

    void cleanupTestCase()
    {
        QDBusConnection::disconnectFromBus(QDBusConnection::sessionBus().name());
        m_bus.stop();
    }

    void theSecondActivatesTheFirst()
    {
        ApplicationService service(applicationId);
        int activations = 0;
        int breaks = 0;
        service.onActivate = [&] { ++activations; };
        service.onBreakNow = [&] { ++breaks; };
        QCOMPARE(service.start({}), ApplicationService::Start::First);

        QProcess *second = startSecond({});
        QTRY_COMPARE(second->state(), QProcess::NotRunning);
        QCOMPARE(second->exitCode(), static_cast<int>(ApplicationService::Start::Second));
        QCOMPARE(activations, 1);
        QProcess *third = startSecond(u"break-now"_s);
        QTRY_COMPARE(third->state(), QProcess::NotRunning);
        QCOMPARE(activations, 1);
        QCOMPARE(breaks, 1);
    }

    void theSecondPassesOnItsActivationToken()
    {
        ApplicationService service(applicationId);
        QCOMPARE(service.start({}), ApplicationService::Start::First);
        QProcess *second = startSecond({}, u"token-8"_s);
        QTRY_COMPARE(second->state(), QProcess::NotRunning);
        QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), QByteArray("token-8"));
        qunsetenv("XDG_ACTIVATION_TOKEN");
    }

    void afterAReleaseTheNextStartIsTheFirst()
    {
        ApplicationService service(applicationId);
        QCOMPARE(service.start({}), ApplicationService::Start::First);
        service.release();
        QProcess *second = startSecond({});
        QTRY_COMPARE(second->state(), QProcess::NotRunning);
        QCOMPARE(second->exitCode(), static_cast<int>(ApplicationService::Start::First));
    }

    void theActivationTokenIsKeptForTheNextWindow()
    {
        ApplicationService service(applicationId);
        service.activate({{u"activation-token"_s, u"token-7"_s}});
        QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), QByteArray("token-7"));
        qunsetenv("XDG_ACTIVATION_TOKEN");
        for (const QString &token : {u"two\nlines"_s, QString(1'025, u'x')}) {
            service.activate({{u"activation-token"_s, token}});
            QVERIFY(!qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN"));
        }
        // Without listeners, an unknown action is ignored.
        service.activateAction(u"something-else"_s, {{u"activation-token"_s, 7.5}});
    }

    void theActivationThatTheBusStartsWithIsTheLaunch()
    {
        qputenv("DBUS_STARTER_ADDRESS", m_bus.address().toLatin1());
        ApplicationService service(applicationId);
        QStringList calls;
        service.onActivate = [&] { calls << u"activate"_s; };
        service.onLaunch = [&] { calls << u"launch"_s; };
        QCOMPARE(service.start({}), ApplicationService::Start::First);
        QVERIFY(!qEnvironmentVariableIsSet("DBUS_STARTER_ADDRESS"));
        service.activate({});
        service.activate({});
        QCOMPARE(calls, (QStringList{u"launch"_s, u"activate"_s}));
    }

    void everyStartThatIsUnderWayIsReported()
    {
        ApplicationService service(applicationId);
        QList<QByteArray> starts;
        service.onStartupId = [&](const QByteArray &id) { starts << id; };
        service.activate({{u"desktop-startup-id"_s, u"launcher-1"_s}});
        service.activateAction(u"break-now"_s, {{u"desktop-startup-id"_s, u"launcher-2"_s}});
        service.activate({{u"desktop-startup-id"_s, u"two\nlines"_s}});
        service.activate({});
        QCOMPARE(starts, (QList<QByteArray>{"launcher-1", "launcher-2"}));
    }

    void openActivatesTheApplication()
    {
        ApplicationService service(applicationId);
        int activations = 0;
        service.onActivate = [&] { ++activations; };
        QDBusConnection bus = QDBusConnection::sessionBus();
        bus.registerObject(objectPath, &service, QDBusConnection::ExportAdaptors);
        QDBusMessage open = QDBusMessage::createMethodCall(bus.baseService(), objectPath,
                                                           u"org.freedesktop.Application"_s, u"Open"_s);
        open << QStringList{u"file:///x"_s} << QVariantMap();
        QCOMPARE(bus.call(open).type(), QDBusMessage::ReplyMessage);
        QCOMPARE(activations, 1);
        bus.unregisterObject(objectPath);
    }
};

static int runApplicationServiceTest(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (application.arguments().value(1) == "--second"_L1) {
        ApplicationService service(applicationId);
        return static_cast<int>(service.start(application.arguments().value(2)));
    }
    ApplicationServiceTest test;
    return QTest::qExec(&test, argc, argv);
}

ORVANE_TEST_WITH_MAIN(ApplicationServiceTest, runApplicationServiceTest)

#include "ApplicationServiceTest.moc"
