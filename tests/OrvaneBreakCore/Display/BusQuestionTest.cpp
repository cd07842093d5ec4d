// SPDX-License-Identifier: GPL-3.0-or-later
#include "BusQuestion.h"

#include "Support/FakeBusService.h"
#include "Support/SessionBusDaemon.h"
#include "Support/TestProgram.h"

#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString service = u"org.example.Service"_s;
const QString path = u"/object"_s;

QDBusMessage question(const QString &method)
{
    return BusQuestion::toRunningService(service, path, service, method);
}

/// A question that the bus answers itself.
QDBusMessage questionForTheBus()
{
    QDBusMessage message = BusQuestion::toRunningService(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, u"NameHasOwner"_s);
    message << u"org.freedesktop.DBus"_s;
    return message;
}

QString activationMarker()
{
    return qEnvironmentVariable("XDG_RUNTIME_DIR") + u"/activated"_s;
}

/// Makes a service startable for a bus that is not running yet. Starting it leaves a mark.
bool installActivation()
{
    const QString folder = qEnvironmentVariable("XDG_DATA_HOME") + u"/dbus-1/services"_s;
    QFile file(folder + u"/org.example.Startable.service"_s);
    return QDir().mkpath(folder) && file.open(QFile::WriteOnly) &&
           file.write("[D-BUS Service]\nName=org.example.Startable\nExec=/usr/bin/touch " +
                      activationMarker().toUtf8() + '\n') > 0;
}

} // namespace

/// Questions to test services on a bus of the test's.
class BusQuestionTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<SessionBusDaemon> m_daemon;
    QObject m_context;

    [[nodiscard]] static QDBusConnection bus() { return QDBusConnection(u"program"_s); }

    [[nodiscard]] QDBusMessage askLater(const QDBusMessage &message, std::chrono::milliseconds limit)
    {
        std::optional<QDBusMessage> reply;
        BusQuestion::askLater(bus(), message, limit, m_context,
                              [&reply](const QDBusMessage &given) { reply = given; });
        (void)QTest::qWaitFor([&reply] { return reply.has_value(); });
        return reply.value_or(QDBusMessage());
    }

private Q_SLOTS:
    static void initTestCase() { QVERIFY(installActivation()); }

    void init()
    {
        m_daemon = std::make_unique<SessionBusDaemon>();
        QVERIFY(QDBusConnection::connectToBus(m_daemon->address(), u"program"_s).isConnected());
    }

    void cleanup()
    {
        QDBusConnection::disconnectFromBus(u"program"_s);
        QTRY_VERIFY(m_context.children().isEmpty());
    }

    void theAnswerOfARunningService()
    {
        QVERIFY(BusQuestion::valueOf(BusQuestion::ask(bus(), questionForTheBus(), 5s)).toBool());
        const FakeBusService running(m_daemon->address(), service, {{u"Number"_s, 7}});
        QCOMPARE(BusQuestion::valueOf(askLater(question(u"Number"_s), 5s)), QVariant(7));
    }

    void aPropertyComesWithoutItsVariants()
    {
        const auto wrapped = [](const QVariant &value) { return QVariant::fromValue(QDBusVariant(value)); };
        const FakeBusService running(m_daemon->address(), service, {{u"Get"_s, wrapped(wrapped(u"text"_s))}});
        const QDBusMessage reply = askLater(BusQuestion::forProperty(service, path, service, u"Name"_s), 5s);
        QCOMPARE(BusQuestion::valueOf(reply), QVariant(u"text"_s));
        QCOMPARE(running.calls, QStringList(u"Get"_s));
    }

    void anErrorIsNoValue()
    {
        const FakeBusService running(m_daemon->address(), service, {});
        const QDBusMessage reply = askLater(question(u"Unknown"_s), 5s);
        QCOMPARE(reply.type(), QDBusMessage::ErrorMessage);
        QVERIFY(!BusQuestion::valueOf(reply).isValid());
        QVERIFY(!BusQuestion::valueOf(QDBusMessage()).isValid());
    }

    void aServiceThatNeverAnswers()
    {
        const FakeBusService silent(m_daemon->address(), service, {{u"Number"_s, QVariant()}});
        QElapsedTimer elapsed;
        elapsed.start();
        QCOMPARE(BusQuestion::ask(bus(), question(u"Number"_s), 50ms).type(), QDBusMessage::ErrorMessage);
        QCOMPARE(askLater(question(u"Number"_s), 50ms).type(), QDBusMessage::ErrorMessage);
        // Far below the 25 seconds that the bus library waits by itself.
        QVERIFY2(elapsed.elapsed() < 5'000, qPrintable(QString::number(elapsed.elapsed())));
    }

    void anAbsentServiceIsNotStarted()
    {
        const QString startable = u"org.example.Startable"_s;
        const QDBusMessage reply =
            askLater(BusQuestion::forProperty(startable, path, startable, u"Name"_s), 5s);
        QCOMPARE(reply.type(), QDBusMessage::ErrorMessage);
        QVERIFY(!QFile::exists(activationMarker()));
    }

    void whoIsGoneHearsNothing()
    {
        const FakeBusService running(m_daemon->address(), service, {{u"Number"_s, 7}});
        bool isReplied = false;
        auto context = std::make_unique<QObject>();
        BusQuestion::askLater(bus(), question(u"Number"_s), 5s, *context,
                              [&isReplied](const QDBusMessage &) { isReplied = true; });
        context.reset();
        // The service answers in turn.
        QCOMPARE(BusQuestion::valueOf(askLater(question(u"Number"_s), 5s)), QVariant(7));
        QVERIFY(!isReplied);
    }

    void noBus()
    {
        const QDBusConnection none(u"never connected"_s);
        QVERIFY(!BusQuestion::valueOf(BusQuestion::ask(none, questionForTheBus(), 5s)).isValid());
        QObject context;
        BusQuestion::askLater(none, questionForTheBus(), 5s, context,
                              [](const QDBusMessage &) { QFAIL("a reply without a bus"); });
        QCoreApplication::processEvents();
    }
};

ORVANE_TEST(BusQuestionTest, QCoreApplication)
#include "BusQuestionTest.moc"
