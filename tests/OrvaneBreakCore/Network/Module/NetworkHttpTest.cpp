// SPDX-License-Identifier: GPL-3.0-or-later
#include "NetworkHttpFixture.h"
#include "Support/NoDescriptors.h"
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
        NetworkHttpFixture f;
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
        NetworkHttpFixture f;
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
            NetworkHttpFixture f;
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
        NetworkHttpFixture f;
        f.sendTo(QUrl(u"http://127.0.0.1:1/"_s));
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(!f.answer);
    }

    static void forbiddenAddressesAreNotContacted()
    {
        NetworkHttpFixture f;
        f.sendTo(QUrl(u"http://example.invalid/"_s));
        QVERIFY(!f.isAnswered());
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(!f.answer);
    }

    static void withoutDescriptorsThereIsNoAnswer()
    {
        NetworkHttpFixture f;
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
            NetworkHttpFixture f;
            f.server.reply = reply;
            f.send(100ms);
            QTRY_VERIFY(f.isAnswered());
            QVERIFY(!f.answer);
        }
    }

    static void tooLargeAnswersAreCancelled()
    {
        const QByteArray mebibyte(1'048'576, 'x');
        NetworkHttpFixture whole;
        whole.server.reply = answerWith("200 OK", mebibyte);
        whole.send();
        QTRY_VERIFY(whole.isAnswered());
        QCOMPARE(whole.answer->body.size(), mebibyte.size());
        NetworkHttpFixture tooLarge;
        tooLarge.server.reply = answerWith("200 OK", mebibyte + 'x');
        tooLarge.send();
        QTRY_VERIFY(tooLarge.isAnswered());
        QVERIFY(!tooLarge.answer);
        NetworkHttpFixture endless;
        endless.server.reply = "HTTP/1.1 200 OK\r\n\r\n" + mebibyte + mebibyte;
        endless.send();
        QTRY_VERIFY(endless.isAnswered());
        QVERIFY(!endless.answer);
    }

    static void aRequestHasAConnectionOfItsOwn()
    {
        NetworkHttpFixture f;
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
        NetworkHttpFixture f;
        for (int request = 0; request < 20; ++request)
            f.send();
        QTRY_COMPARE(f.server.received.count(" /api HTTP/1.1\r\n"), 20);
        QCOMPARE(f.completions, 0);
    }

    static void theAddressMayBeOfIPv6()
    {
        ScriptedServer server(QHostAddress::LocalHostIPv6);
        server.reply = answerWith("200 OK", "{}");
        NetworkHttpFixture f;
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
        NetworkHttpFixture f;
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
        NetworkHttpFixture f;
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
            NetworkHttpFixture f;
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
            NetworkHttpFixture f;
            f.sendTo(QUrl(u"https://stuck.test/"_s), 50ms);
            QTRY_VERIFY(f.isAnswered());
            QVERIFY(!f.answer);
            f.sendTo(QUrl(u"https://stuck.test/"_s));
            QTRY_COMPARE(stuck.count(), 2);
        }
        QCOMPARE(stuck.count(), 2);
    }

    static void destroyingTheContextCancelsTheExchange()
    {
        NetworkHttpFixture f;
        f.send();
        QTRY_VERIFY(f.server.socket && f.server.isWhole());
        f.context.reset();
        QTRY_COMPARE(f.server.socket->state(), QAbstractSocket::UnconnectedState);
        QCOMPARE(f.completions, 0);
    }
};

ORVANE_TEST(NetworkHttpTest, QCoreApplication)
#include "NetworkHttpTest.moc"
