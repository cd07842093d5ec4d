// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11UserIdle.h"

#include "ScriptedXServer.h"
#include "Support/TestProgram.h"

#include <QElapsedTimer>
#include <QTest>

#include <xcb/xcb.h>

#include <utility>

namespace {

using Answer = ScriptedXServer::Answer;
using Start = ScriptedXServer::Start;

InputIdleSeconds allKinds(double seconds)
{
    InputIdleSeconds figures{};
    figures.fill(seconds);
    return figures;
}

X11Client connectTo(const ScriptedXServer &server)
{
    return X11Client(XcbConnectionPointer(xcb_connect_to_fd(server.clientSocket(), nullptr)));
}

} // namespace

/// The idle time from the screen-saver extension of a server that answers as the test chooses.
class X11UserIdleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFigureOfEveryKind()
    {
        ScriptedXServer server;
        const X11UserIdle userIdle(connectTo(server));
        QVERIFY(userIdle.isOffered());
        server.milliseconds = 61'250;
        QVERIFY(userIdle.secondsSinceLastInput() == allKinds(61.25));
        server.milliseconds = 4'000'000'000U;
        QVERIFY(userIdle.secondsSinceLastInput() == allKinds(4'000'000));
    }

    void unaskedEventsAreTakenOutOfTheQueue()
    {
        ScriptedXServer server;
        X11Client client = connectTo(server);
        xcb_connection_t *observed = client.connection();
        const X11UserIdle userIdle(std::move(client));
        server.milliseconds = 3'000;
        server.answer = Answer::FigureAfterUnaskedEvent;
        QVERIFY(userIdle.secondsSinceLastInput() == allKinds(3));
        QVERIFY(!xcb_poll_for_queued_event(observed));
    }

    void unreachableDisplay_data()
    {
        QTest::addColumn<QByteArray>("display");
        QTest::newRow("nobody there") << QByteArray(":65000");
        QTest::newRow("malformed") << QByteArray("no display");
        QTest::newRow("empty") << QByteArray();
    }

    void unreachableDisplay()
    {
        QFETCH(QByteArray, display);
        qputenv("DISPLAY", display);
        const X11UserIdle userIdle;
        qunsetenv("DISPLAY");
        QVERIFY(!userIdle.isOffered());
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
    }

    void missingExtension()
    {
        const ScriptedXServer server(Start::WithoutExtension);
        const X11UserIdle userIdle(connectTo(server));
        QVERIFY(!userIdle.isOffered());
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
    }

    void serverThatDiesAtTheStart()
    {
        const ScriptedXServer server(Start::HangUp);
        const X11UserIdle userIdle(connectTo(server));
        QVERIFY(!userIdle.isOffered());
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
    }

    void serverThatDiesLater()
    {
        ScriptedXServer server;
        const X11UserIdle userIdle(connectTo(server));
        QVERIFY(userIdle.isOffered());
        server.answer = Answer::HangUp;
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
    }

    void serverThatRefuses()
    {
        ScriptedXServer server;
        const X11UserIdle userIdle(connectTo(server));
        server.milliseconds = 1'000;
        server.answer = Answer::Error;
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
        server.answer = Answer::Figure;
        QVERIFY(userIdle.secondsSinceLastInput() == allKinds(1));
    }

    void serverThatDoesNotAnswerInTime()
    {
        ScriptedXServer server;
        const X11UserIdle userIdle(connectTo(server));
        server.milliseconds = 2'000;
        server.answer = Answer::Silence;
        QElapsedTimer elapsed;
        elapsed.start();
        QVERIFY(userIdle.secondsSinceLastInput() == InputIdleSeconds{});
        QVERIFY2(elapsed.elapsed() < 5'000, qPrintable(QString::number(elapsed.elapsed())));
        // The late reply is not taken for the reply to the next question.
        server.answer = Answer::LateFigureFirst;
        QVERIFY(userIdle.secondsSinceLastInput() == allKinds(2));
    }
};

ORVANE_TEST(X11UserIdleTest, QCoreApplication)
#include "X11UserIdleTest.moc"
