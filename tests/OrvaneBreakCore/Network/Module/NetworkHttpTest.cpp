// SPDX-License-Identifier: GPL-3.0-or-later
#include "NetworkHttp.h"

#include "Support/NoDescriptors.h"
#include "Support/ScriptedServer.h"
#include "Support/TestProgram.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

struct Fixture
{
    void send(std::chrono::milliseconds limit = 20s) { sendTo(server.url(), limit); }

    void sendTo(const QUrl &url, std::chrono::milliseconds limit = 20s)
    {
        const auto complete = [this](const std::optional<HttpAnswer> &result) {
            ++completions;
            answer = result;
        };
        if (isPost())
            http.post(url, R"({"a":1})", limit, *context, complete);
        else
            http.get(url, limit, *context, complete);
    }

    static bool isPost()
    {
        QFETCH_GLOBAL(bool, isPost);
        return isPost;
    }

    [[nodiscard]] bool isAnswered() const { return completions == 1; }

    ScriptedServer server;
    NetworkHttp http;
    std::unique_ptr<QObject> context = std::make_unique<QObject>();
    std::optional<HttpAnswer> answer;
    int completions = 0;
};

} // namespace

/// Requests over sockets of this machine.
class NetworkHttpTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void initTestCase_data()
    {
        QTest::addColumn<bool>("isPost");
        QTest::newRow("get") << false;
        QTest::newRow("post") << true;
    }

    static void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    static void aRequestGetsAnAnswer()
    {
        Fixture f;
        f.server.reply = answerWith("200 OK", "{\"ok\":true}");
        f.send();
        QVERIFY(!f.isAnswered());
        QTRY_VERIFY(f.isAnswered());
        QCOMPARE(f.answer->status, 200);
        QCOMPARE(f.answer->body, "{\"ok\":true}");
        QVERIFY(
            f.server.received.startsWith(f.isPost() ? "POST /api HTTP/1.1\r\n" : "GET /api HTTP/1.1\r\n"));
        QVERIFY(f.server.received.endsWith(f.isPost() ? "\r\n\r\n{\"a\":1}" : "\r\n\r\n"));
        QCOMPARE(f.server.received.toLower().contains("content-type"), f.isPost());
        QVERIFY(!f.server.received.toLower().contains("cookie"));
    }

    static void errorStatusesAreAnswers()
    {
        for (const QByteArray &status :
             {QByteArray("500 Trouble"), QByteArray("404 Not Found"), QByteArray("401 No")}) {
            Fixture f;
            f.server.reply = answerWith(status, "text");
            f.send();
            QTRY_VERIFY(f.isAnswered());
            QVERIFY(f.answer);
            QCOMPARE(f.answer->status, status.left(3).toInt());
            QCOMPARE(f.answer->body, "text");
        }
    }

    static void aClosedPortGivesNoAnswer()
    {
        Fixture f;
        f.sendTo(QUrl(u"http://127.0.0.1:1/"_s));
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(!f.answer);
    }

    static void forbiddenAddressesAreNotContacted()
    {
        Fixture f;
        f.sendTo(QUrl(u"http://example.invalid/"_s));
        QVERIFY(!f.isAnswered());
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(!f.answer);
    }

    static void withoutDescriptorsThereIsNoAnswer()
    {
        Fixture f;
        f.server.reply = answerWith("200 OK", "{}");
        {
            const NoDescriptors none;
            f.send();
            QVERIFY(!f.isAnswered());
            QTRY_VERIFY(f.isAnswered());
            QVERIFY(!f.answer);
        }
        f.completions = 0;
        f.send();
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(f.answer);
    }

    static void slowAnswersEndAtTheLimit()
    {
        for (const QByteArray &reply :
             {QByteArray(), QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nab")}) {
            Fixture f;
            f.server.reply = reply;
            f.send(100ms);
            QTRY_VERIFY(f.isAnswered());
            QVERIFY(!f.answer);
        }
    }

    static void tooLargeAnswersAreCancelled()
    {
        const QByteArray mebibyte(1'048'576, 'x');
        Fixture whole;
        whole.server.reply = answerWith("200 OK", mebibyte);
        whole.send();
        QTRY_VERIFY(whole.isAnswered());
        QCOMPARE(whole.answer->body.size(), mebibyte.size());
        Fixture tooLarge;
        tooLarge.server.reply = answerWith("200 OK", mebibyte + 'x');
        tooLarge.send();
        QTRY_VERIFY(tooLarge.isAnswered());
        QVERIFY(!tooLarge.answer);
        Fixture endless;
        endless.server.reply = "HTTP/1.1 200 OK\r\n\r\n" + mebibyte + mebibyte;
        endless.send();
        QTRY_VERIFY(endless.isAnswered());
        QVERIFY(!endless.answer);
    }

    static void brokenAnswersAreIgnored()
    {
        for (const QByteArray &reply :
             {QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nab"), QByteArray("nonsense\r\n\r\n")}) {
            Fixture f;
            // Qt may retry on a new connection, which gets no answer.
            f.send(300ms);
            QTRY_VERIFY(f.server.socket && f.server.isWhole());
            f.server.socket->write(reply);
            f.server.socket->disconnectFromHost();
            QTRY_VERIFY(f.isAnswered());
            QVERIFY(!f.answer || f.answer->status != 200);
        }
    }

    static void redirectsToForbiddenAddressesAreNotFollowed()
    {
        Fixture f;
        f.server.reply =
            "HTTP/1.1 302 Found\r\nLocation: http://example.invalid/\r\nContent-Length: 0\r\n\r\n";
        f.send();
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(!f.answer);
    }

    static void redirectsWithinThisMachineAreFollowed()
    {
        ScriptedServer target;
        target.reply = answerWith("200 OK", "there");
        Fixture f;
        f.server.reply =
            "HTTP/1.1 307 Go\r\nLocation: " + target.url().toEncoded() + "\r\nContent-Length: 0\r\n\r\n";
        f.send();
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(f.answer);
        QCOMPARE(f.answer->body, "there");
    }

    static void destroyingTheContextCancelsTheExchange()
    {
        Fixture f;
        f.send();
        QTRY_VERIFY(f.server.socket && f.server.isWhole());
        f.context.reset();
        QTRY_COMPARE(f.server.socket->state(), QAbstractSocket::UnconnectedState);
        QCOMPARE(f.completions, 0);
    }
};

ORVANE_TEST(NetworkHttpTest, QCoreApplication)
#include "NetworkHttpTest.moc"
