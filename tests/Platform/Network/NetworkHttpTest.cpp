// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Network/NetworkHttp.h"

#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QUrl>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// A server on this machine that says what the test wants, byte by byte.
class ScriptedServer : public QObject
{
public:
    ScriptedServer()
    {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            socket = m_server.nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this] {
                received += socket->readAll();
                if (!reply.isEmpty() && isWhole())
                    socket->write(std::exchange(reply, {}));
            });
        });
    }

    [[nodiscard]] QUrl url() const { return QUrl(u"http://127.0.0.1:%1/api"_s.arg(m_server.serverPort())); }

    [[nodiscard]] bool isWhole() const
    {
        const qsizetype head = received.indexOf("\r\n\r\n");
        static const QRegularExpression length(u"content-length: (\\d+)"_s,
                                               QRegularExpression::CaseInsensitiveOption);
        const qsizetype expected = length.match(QString::fromLatin1(received)).captured(1).toLongLong();
        return head >= 0 && received.size() >= head + 4 + expected;
    }

    QByteArray reply;
    QByteArray received;
    QTcpSocket *socket = nullptr;

private:
    QTcpServer m_server;
};

QByteArray answerWith(const QByteArray &status, const QByteArray &body)
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" +
           body;
}

struct Fixture
{
    void post(std::chrono::milliseconds limit = 20s)
    {
        http.post(server.url(), R"({"a":1})", limit, *context,
                  [this](const std::optional<HttpAnswer> &result) {
                      ++completions;
                      answer = result;
                  });
    }

    [[nodiscard]] bool isAnswered() const { return completions == 1; }

    ScriptedServer server;
    NetworkHttp http;
    std::unique_ptr<QObject> context = std::make_unique<QObject>();
    std::optional<HttpAnswer> answer;
    int completions = 0;
};

} // namespace

/// The requests over real sockets of this machine.
class NetworkHttpTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    static void sendsTheBodyAndBringsTheAnswer()
    {
        Fixture f;
        f.server.reply = answerWith("200 OK", "{\"ok\":true}");
        f.post();
        QVERIFY(!f.isAnswered());
        QTRY_VERIFY(f.isAnswered());
        QCOMPARE(f.answer->status, 200);
        QCOMPARE(f.answer->body, "{\"ok\":true}");
        QVERIFY(f.server.received.startsWith("POST /api HTTP/1.1\r\n"));
        QVERIFY(f.server.received.endsWith("\r\n\r\n{\"a\":1}"));
        QVERIFY(!f.server.received.toLower().contains("cookie"));
    }

    static void refusalsAreAnswers()
    {
        for (const QByteArray &status :
             {QByteArray("500 Trouble"), QByteArray("404 Not Found"), QByteArray("401 No")}) {
            Fixture f;
            f.server.reply = answerWith(status, "text");
            f.post();
            QTRY_VERIFY(f.isAnswered());
            QVERIFY(f.answer);
            QCOMPARE(f.answer->status, status.left(3).toInt());
            QCOMPARE(f.answer->body, "text");
        }
    }

    static void nobodyThereIsNoAnswer()
    {
        Fixture f;
        bool isCalled = false;
        f.http.post(QUrl(u"http://127.0.0.1:1/"_s), "{}", 20s, *f.context,
                    [&isCalled](const std::optional<HttpAnswer> &answer) { isCalled = !answer; });
        QTRY_VERIFY(isCalled);
    }

    static void forbiddenAddressesAreNotCalled()
    {
        Fixture f;
        bool isCalled = false;
        f.http.post(QUrl(u"http://example.invalid/"_s), "{}", 20s, *f.context,
                    [&isCalled](const std::optional<HttpAnswer> &answer) { isCalled = !answer; });
        QVERIFY(!isCalled);
        QTRY_VERIFY(isCalled);
    }

    static void silenceAndDripsEndAtTheLimit()
    {
        for (const QByteArray &reply :
             {QByteArray(), QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nab")}) {
            Fixture f;
            f.server.reply = reply;
            f.post(100ms);
            QTRY_VERIFY(f.isAnswered());
            QVERIFY(!f.answer);
        }
    }

    static void largeAnswersAreAbandoned()
    {
        const QByteArray mebibyte(1'048'576, 'x');
        Fixture whole;
        whole.server.reply = answerWith("200 OK", mebibyte);
        whole.post();
        QTRY_VERIFY(whole.isAnswered());
        QCOMPARE(whole.answer->body.size(), mebibyte.size());
        Fixture tooLarge;
        tooLarge.server.reply = answerWith("200 OK", mebibyte + 'x');
        tooLarge.post();
        QTRY_VERIFY(tooLarge.isAnswered());
        QVERIFY(!tooLarge.answer);
        Fixture endless;
        endless.server.reply = "HTTP/1.1 200 OK\r\n\r\n" + mebibyte + mebibyte;
        endless.post();
        QTRY_VERIFY(endless.isAnswered());
        QVERIFY(!endless.answer);
    }

    static void brokenAnswersAreNone()
    {
        for (const QByteArray &reply :
             {QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nab"), QByteArray("nonsense\r\n\r\n")}) {
            Fixture f;
            // The toolkit may ask again on a new connection, where nobody answers.
            f.post(300ms);
            QTRY_VERIFY(f.server.socket && f.server.isWhole());
            f.server.socket->write(reply);
            f.server.socket->disconnectFromHost();
            QTRY_VERIFY(f.isAnswered());
            QVERIFY(!f.answer || f.answer->status != 200);
        }
    }

    static void redirectsToUnsafePlacesAreNotFollowed()
    {
        Fixture f;
        f.server.reply =
            "HTTP/1.1 302 Found\r\nLocation: http://example.invalid/\r\nContent-Length: 0\r\n\r\n";
        f.post();
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(!f.answer);
    }

    static void redirectsWithinThisMachineAre()
    {
        ScriptedServer target;
        target.reply = answerWith("200 OK", "there");
        Fixture f;
        f.server.reply =
            "HTTP/1.1 307 Go\r\nLocation: " + target.url().toEncoded() + "\r\nContent-Length: 0\r\n\r\n";
        f.post();
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(f.answer);
        QCOMPARE(f.answer->body, "there");
    }

    static void aContextThatGoesTakesTheExchangeWithIt()
    {
        Fixture f;
        f.post();
        QTRY_VERIFY(f.server.socket && f.server.isWhole());
        f.context.reset();
        QTRY_COMPARE(f.server.socket->state(), QAbstractSocket::UnconnectedState);
        QCOMPARE(f.completions, 0);
    }
};

QTEST_GUILESS_MAIN(NetworkHttpTest)
#include "NetworkHttpTest.moc"
