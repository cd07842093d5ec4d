// SPDX-License-Identifier: GPL-3.0-or-later
#include "MutterUserIdle.h"

#include "FakeIdleMonitor.h"
#include "Support/SessionBusDaemon.h"
#include "Support/TestProgram.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Answer = FakeIdleMonitorObject::Answer;

InputIdleSeconds allKinds(double seconds)
{
    InputIdleSeconds figures{};
    figures.fill(seconds);
    return figures;
}

QString activationMarker()
{
    return qEnvironmentVariable("XDG_RUNTIME_DIR") + u"/activated"_s;
}

/// Makes the service startable for a bus that is not running yet. Starting it leaves a mark.
bool installActivation()
{
    const QString folder = qEnvironmentVariable("XDG_DATA_HOME") + u"/dbus-1/services"_s;
    QFile file(folder + u"/org.gnome.Mutter.IdleMonitor.service"_s);
    return QDir().mkpath(folder) && file.open(QFile::WriteOnly) &&
           file.write("[D-BUS Service]\nName=org.gnome.Mutter.IdleMonitor\nExec=/usr/bin/touch " +
                      activationMarker().toUtf8() + '\n') > 0;
}

} // namespace

/// The idle time from a service like Mutter's, on a bus of the test's.
class MutterUserIdleTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<SessionBusDaemon> m_daemon;
    std::unique_ptr<QDBusConnection> m_bus;

private Q_SLOTS:
    static void initTestCase() { QVERIFY(installActivation()); }

    void init()
    {
        m_daemon = std::make_unique<SessionBusDaemon>();
        m_bus = std::make_unique<QDBusConnection>(
            QDBusConnection::connectToBus(m_daemon->address(), u"program"_s));
        QVERIFY(m_bus->isConnected());
    }

    void cleanup()
    {
        m_bus.reset();
        QDBusConnection::disconnectFromBus(u"program"_s);
        m_daemon.reset();
    }

    void theFigureOfEveryKindWithOneCall()
    {
        FakeIdleMonitor monitor(m_daemon->address());
        QVERIFY(monitor.isRegistered);
        monitor.object.milliseconds = 83'456;
        const MutterUserIdle userIdle(*m_bus, MutterUserIdle::mutter);
        QVERIFY(userIdle.isOffered());
        QVERIFY(userIdle.secondsSinceLastInput() == allKinds(83.456));
        QCOMPARE(monitor.object.calls.load(), 1);
        monitor.object.milliseconds = 0;
        QVERIFY(userIdle.secondsSinceLastInput() == allKinds(0));
        QCOMPARE(monitor.object.calls.load(), 2);
    }

    void theMonitorOfMuffinHasItsOwnNames()
    {
        ThreadedBusService<FakeMuffinMonitorObject> monitor(m_daemon->address(),
                                                            u"org.cinnamon.Muffin.IdleMonitor"_s,
                                                            u"/org/cinnamon/Muffin/IdleMonitor/Core"_s);
        QVERIFY(!MutterUserIdle(*m_bus, MutterUserIdle::mutter).isOffered());
        const MutterUserIdle userIdle(*m_bus, MutterUserIdle::muffin);
        QVERIFY(userIdle.isOffered());
        QVERIFY(userIdle.secondsSinceLastInput() == allKinds(12));
    }

    void anErrorOrAnAnswerOfAnotherType_data()
    {
        QTest::addColumn<Answer>("answer");
        QTest::newRow("error") << Answer::Error;
        QTest::newRow("text") << Answer::Text;
    }

    void anErrorOrAnAnswerOfAnotherType()
    {
        QFETCH(Answer, answer);
        FakeIdleMonitor monitor(m_daemon->address());
        QVERIFY(monitor.isRegistered);
        monitor.object.milliseconds = 5'000;
        monitor.object.answer = answer;
        const MutterUserIdle userIdle(*m_bus, MutterUserIdle::mutter);
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
        QCOMPARE(monitor.object.calls.load(), 1);
        monitor.object.answer = Answer::Figure;
        QVERIFY(userIdle.secondsSinceLastInput() == allKinds(5));
    }

    void aServiceThatNeverAnswers()
    {
        FakeIdleMonitor monitor(m_daemon->address());
        QVERIFY(monitor.isRegistered);
        monitor.object.answer = Answer::Silence;
        const MutterUserIdle userIdle(*m_bus, MutterUserIdle::mutter);
        QElapsedTimer elapsed;
        elapsed.start();
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
        // Far below the 25 seconds that the bus library waits by itself.
        QVERIFY2(elapsed.elapsed() < 5'000, qPrintable(QString::number(elapsed.elapsed())));
        QCOMPARE(monitor.object.calls.load(), 1);
    }

    void anAbsentServiceIsNotStarted()
    {
        const MutterUserIdle userIdle(*m_bus, MutterUserIdle::mutter);
        QVERIFY(!userIdle.isOffered());
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
        QVERIFY(!QFile::exists(activationMarker()));
    }

    void theServiceIsFoundWhenItComesLater()
    {
        const MutterUserIdle userIdle(*m_bus, MutterUserIdle::mutter);
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
        FakeIdleMonitor monitor(m_daemon->address());
        monitor.object.milliseconds = 1'000;
        QVERIFY(userIdle.secondsSinceLastInput() == allKinds(1));
    }

    void aBusThatDies()
    {
        const MutterUserIdle userIdle(*m_bus, MutterUserIdle::mutter);
        m_daemon->stop();
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
        QVERIFY(!userIdle.isOffered());
    }

    void noBus()
    {
        const QDBusConnection none(u"never connected"_s);
        const MutterUserIdle userIdle(none, MutterUserIdle::mutter);
        QVERIFY(!userIdle.isOffered());
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
    }
};

ORVANE_TEST(MutterUserIdleTest, QCoreApplication)
#include "MutterUserIdleTest.moc"
