// SPDX-License-Identifier: GPL-3.0-or-later
#include "NetworkHttp.h"

#include "Support/NoDescriptors.h"
#include "Support/ScriptedServer.h"
#include "Support/TestProgram.h"

#include <QFile>
#include <QTest>

#include <netdb.h>

#include <atomic>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

std::atomic<int> lookups = 0;
std::atomic<bool> isStuck = false;

/// The resolver does not answer for as long as this lives.
class StuckLookup
{
public:
    StuckLookup()
    {
        lookups = 0;
        isStuck = true;
    }
    ~StuckLookup()
    {
        isStuck = false;
        isStuck.notify_all();
    }
    StuckLookup(const StuckLookup &) = delete;
    StuckLookup &operator=(const StuckLookup &) = delete;

    [[nodiscard]] static int count() { return lookups; }
};

} // namespace

/// Stands in for the resolver of the C library, which libcurl calls.
extern "C" __attribute__((visibility("default"))) int getaddrinfo(const char *, const char *,
                                                                  const addrinfo *, addrinfo **)
{
    ++lookups;
    isStuck.wait(true);
    return EAI_AGAIN;
}

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

    static void aRequestIsTheDocumentedOne()
    {
        QFile document(QStringLiteral(ORVANE_DOCUMENTS "/protocol.md"));
        QVERIFY(document.open(QFile::ReadOnly));
        const QByteArray text = document.readAll();
        const qsizetype begin = text.indexOf("    POST /api/check.php");
        QByteArray documented = text.mid(begin, text.indexOf("}\n", begin) + 1 - begin);
        documented.replace("    ", "").replace("\n", "\r\n");
        Fixture f;
        documented.replace("/api/check.php", "/api");
        documented.replace("example.org", f.server.url().authority().toLatin1());
        f.send();
        QTRY_VERIFY(f.server.isWhole());
        if (f.isPost())
            QCOMPARE(f.server.received, documented);
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
            f.send();
            QTRY_VERIFY(f.server.socket && f.server.isWhole());
            f.server.socket->write(reply);
            f.server.socket->disconnectFromHost();
            QTRY_VERIFY(f.isAnswered());
            QVERIFY(!f.answer);
        }
    }

    static void whateverGoesWrongTheRequestIsSentOnce()
    {
        for (const QByteArray &reply :
             {QByteArray(), QByteArray("HTTP/1.1 200 O"), QByteArray("HTTP/1.1 200 OK\r\nContent-Le"),
              QByteArray("{\"ok\":true}"), QByteArray("\r\n\r\n"), QByteArray("HTTP/9 ? ?\r\n\r\n"),
              QByteArray("HTTP/1.1 417 No\r\nContent-Length: 9\r\n\r\n"),
              QByteArray("HTTP/1.1 103 Early\r\n\r\n"), QByteArray("HTTP/1.1 102 Wait\r\n\r\n"),
              QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nb\r\n{\"ok\":true}\r\nz\r\n"),
              QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nb\r\n{\"ok\":true}\r\n")}) {
            Fixture f;
            f.server.reply = reply;
            f.server.closes = true;
            f.send();
            QTRY_VERIFY2(f.isAnswered(), reply);
            QVERIFY2(!f.answer, reply);
            QCOMPARE(f.server.received.count(" /api HTTP/1.1\r\n"), 1);
            QCOMPARE(f.server.connections, 1);
        }
    }

    static void aRequestHasAConnectionOfItsOwn()
    {
        Fixture f;
        for (int count = 1; count <= 2; ++count) {
            f.server.reply = answerWith("200 OK", "{}");
            f.send();
            QTRY_COMPARE(f.completions, count);
            QCOMPARE(f.server.connections, count);
            f.server.received.clear();
        }
    }

    static void requestsDoNotWaitForEachOther()
    {
        Fixture f;
        for (int request = 0; request < 20; ++request)
            f.send();
        QTRY_COMPARE(f.server.received.count(" /api HTTP/1.1\r\n"), 20);
        QCOMPARE(f.completions, 0);
    }

    static void endlessAnswersEndEarly_data()
    {
        QTest::addColumn<QByteArray>("begin");
        QTest::addColumn<QByteArray>("endless");
        const QByteArray chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
        QTest::newRow("status line") << QByteArray("HTTP/1.1 200 ") << QByteArray("O");
        QTest::newRow("header") << QByteArray("HTTP/1.1 200 OK\r\nA: ") << QByteArray("a");
        QTest::newRow("headers") << QByteArray("HTTP/1.1 200 OK\r\n") << QByteArray("A: a\r\n");
        QTest::newRow("interim answers") << QByteArray() << QByteArray("HTTP/1.1 100 Continue\r\n\r\n");
        QTest::newRow("early hints") << QByteArray() << QByteArray("HTTP/1.1 103 Early\r\n\r\n");
        QTest::newRow("body") << QByteArray("HTTP/1.1 200 OK\r\n\r\n") << QByteArray("x");
        QTest::newRow("chunk extension") << QByteArray(chunked + "1;") << QByteArray("x");
        QTest::newRow("chunks") << chunked << QByteArray("1\r\nx\r\n");
        QTest::newRow("trailers") << QByteArray(chunked + "0\r\n") << QByteArray("A: a\r\n");
        QTest::newRow("redirect") << QByteArray("HTTP/1.1 302 Found\r\nLocation: /\r\n\r\n")
                                  << QByteArray("x");
        QTest::newRow("garbage") << QByteArray() << QByteArray("garbage");
    }

    static void endlessAnswersEndEarly()
    {
        QFETCH(QByteArray, begin);
        QFETCH(QByteArray, endless);
        Fixture f;
        f.server.reply = begin;
        f.server.endless = endless;
        // Without a limit on bytes it would go on until the time limit, which comes too late.
        f.send(1h);
        QTRY_VERIFY_WITH_TIMEOUT(f.isAnswered(), 30'000);
        QVERIFY(!f.answer);
        QCOMPARE(f.server.connections, 1);
    }

    static void interimAnswersAreNotTheAnswer()
    {
        Fixture f;
        f.server.reply =
            "HTTP/1.1 102 Wait\r\n\r\nHTTP/1.1 103 Early\r\nLink: x\r\n\r\n" + answerWith("200 OK", "{}");
        f.send();
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(f.answer);
        QCOMPARE(f.answer->status, 200);
        QCOMPARE(f.answer->body, "{}");
    }

    static void chunksMayHaveExtensionsAndTrailers()
    {
        Fixture f;
        f.server.reply =
            "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2;a=b\r\n{}\r\n0\r\nA: a\r\n\r\n";
        f.send();
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(f.answer);
        QCOMPARE(f.answer->body, "{}");
    }

    static void onlyTheFirstAnswerCounts()
    {
        for (const QByteArray &rest :
             {QByteArray("x"), answerWith("500 No", "other"), QByteArray(70'000, 'x')}) {
            Fixture f;
            f.server.reply = answerWith("200 OK", "{}") + rest;
            f.send();
            QTRY_VERIFY(f.isAnswered());
            QVERIFY(f.answer);
            QCOMPARE(f.answer->status, 200);
            QCOMPARE(f.answer->body, "{}");
        }
    }

    static void bodiesAreNotDecompressed()
    {
        Fixture f;
        f.server.reply =
            "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 4\r\n\r\n\x1f\x8b\x08z";
        f.send();
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(f.answer);
        QCOMPARE(f.answer->body, "\x1f\x8b\x08z");
        QVERIFY(!f.server.received.toLower().contains("accept-encoding"));
    }

    static void theAddressMayBeOfIPv6()
    {
        ScriptedServer server(QHostAddress::LocalHostIPv6);
        server.reply = answerWith("200 OK", "{}");
        Fixture f;
        f.sendTo(server.url());
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(f.answer);
        QVERIFY2(server.received.contains("\r\nHost: [::1]:"), server.received);
    }

    static void proxiesAreNotUsedForThisMachine()
    {
        ScriptedServer proxy;
        for (const char *variable : {"http_proxy", "HTTP_PROXY", "https_proxy", "all_proxy", "ALL_PROXY"})
            qputenv(variable, proxy.url().toEncoded());
        Fixture f;
        f.server.reply = answerWith("200 OK", "{}");
        f.send();
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(f.answer);
        QCOMPARE(proxy.connections, 0);
        // Through the proxy it would connect to any name without looking it up.
        f.sendTo(QUrl(u"https://name.test/"_s));
        QTRY_COMPARE(proxy.connections, 1);
        QTRY_VERIFY2(proxy.received.startsWith("CONNECT name.test:443 HTTP/1.1\r\n"), proxy.received);
        for (const char *variable : {"http_proxy", "HTTP_PROXY", "https_proxy", "all_proxy", "ALL_PROXY"})
            qunsetenv(variable);
    }

    static void cookiesAreNotKept()
    {
        Fixture f;
        f.server.standingReply = answerWith("200 OK", "{}");
        f.server.reply =
            "HTTP/1.1 307 Go\r\nSet-Cookie: a=b\r\nLocation: elsewhere?x#y\r\nContent-Length: 0\r\n\r\n";
        f.send();
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(f.answer);
        QVERIFY2(f.server.received.contains(" /elsewhere?x HTTP/1.1\r\n"), f.server.received);
        QVERIFY(!f.server.received.toLower().contains("cookie"));
    }

    /// The callback for the departure belongs to POST.
    static void aRequestLeavesOnlyWhenItMay()
    {
        for (const bool mayLeave : {true, false}) {
            Fixture f;
            f.server.reply = answerWith("200 OK", "{}");
            int departures = 0;
            f.http.post(
                f.server.url(), "{}", 20s, *f.context,
                [&](const std::optional<HttpAnswer> &result) {
                    ++f.completions;
                    f.answer = result;
                },
                [&] {
                    ++departures;
                    return mayLeave && f.server.received.isEmpty();
                });
            QCOMPARE(departures, 0);
            QTRY_VERIFY(f.isAnswered());
            QCOMPARE(departures, 1);
            QCOMPARE(f.answer.has_value(), mayLeave);
            QCOMPARE(f.server.received.isEmpty(), !mayLeave);
        }
    }

    static void theEndDoesNotWaitForAName()
    {
        StuckLookup stuck;
        {
            Fixture f;
            f.sendTo(QUrl(u"https://stuck.test/"_s), 50ms);
            QTRY_VERIFY(f.isAnswered());
            QVERIFY(!f.answer);
            f.sendTo(QUrl(u"https://stuck.test/"_s));
            QTRY_COMPARE(stuck.count(), 2);
        }
        QCOMPARE(stuck.count(), 2);
    }

    static void redirectsToUnsafePlacesAreNotFollowed()
    {
        for (const QByteArray &target :
             {QByteArray("http://example.invalid/"), QByteArray("http://localhost/"),
              QByteArray("http://a:b@127.0.0.1/"), QByteArray("ftp://127.0.0.1/"),
              QByteArray("file:///etc/passwd"), QByteArray("http://[::1"), QByteArray("https://")}) {
            Fixture f;
            f.server.reply = "HTTP/1.1 302 Found\r\nLocation: " + target + "\r\nContent-Length: 0\r\n\r\n";
            f.send();
            QTRY_VERIFY2(f.isAnswered(), target);
            QVERIFY2(!f.answer, target);
        }
    }

    static void redirectsWithinThisMachineAreFollowed()
    {
        for (const QByteArray &status : {QByteArray("301"), QByteArray("302"), QByteArray("303"),
                                         QByteArray("307"), QByteArray("308")}) {
            ScriptedServer target;
            target.reply = answerWith("200 OK", "there");
            Fixture f;
            f.server.reply = "HTTP/1.1 " + status + " Go\r\nLocation: " + target.url().toEncoded() +
                             "\r\nContent-Length: 4\r\n\r\ntext";
            f.send();
            QTRY_VERIFY(f.isAnswered());
            QVERIFY2(f.answer, status);
            QCOMPARE(f.answer->body, "there");
            const bool keepsBody = f.isPost() && status > "303";
            QVERIFY2(target.received.startsWith(keepsBody ? "POST" : "GET"), target.received);
            QVERIFY2(target.received.endsWith(keepsBody ? "{\"a\":1}" : "\r\n\r\n"), target.received);
        }
    }

    static void aRedirectLoopEnds()
    {
        Fixture f;
        f.server.standingReply = "HTTP/1.1 307 Go\r\nLocation: /api\r\nContent-Length: 0\r\n\r\n";
        f.send();
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(!f.answer);
        QCOMPARE(f.server.connections, 6);
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
