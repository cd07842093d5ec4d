// SPDX-License-Identifier: GPL-3.0-or-later
#include "NetworkDownloads.h"

#include "Support/NoDescriptors.h"
#include "Support/ScriptedServer.h"
#include "Support/TestProgram.h"

#include <QTest>

#include <memory>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using End = Downloads::End;

namespace {

QByteArray partWith(const QByteArray &range, const QByteArray &body)
{
    return "HTTP/1.1 206 Part\r\nContent-Range: " + range +
           "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

struct Fixture
{
    explicit Fixture(std::chrono::milliseconds inactivityTimeout = 20s)
        : downloads(inactivityTimeout)
    {
    }

    void get(qint64 offset = 0) { get(server.url(), offset); }

    void get(const QUrl &url, qint64 offset)
    {
        exchange = downloads.get(url, offset,
                                 {[this](qint64 begin) { begins.push_back(begin); },
                                  [this](const QByteArray &bytes) { receive(bytes); },
                                  [this](End end) { ends.push_back(end); }});
    }

    void receive(const QByteArray &bytes)
    {
        received += bytes;
        largestPiece = std::max(largestPiece, bytes.size());
        if (destroysExchangeOnData)
            exchange.reset();
    }

    [[nodiscard]] bool hasEndedWith(End end) const { return ends == std::vector{end}; }
    [[nodiscard]] bool isUntouched() const { return begins.empty() && received.isEmpty(); }

    ScriptedServer server;
    NetworkDownloads downloads;
    std::unique_ptr<Downloads::Exchange> exchange;
    std::vector<qint64> begins;
    std::vector<End> ends;
    QByteArray received;
    qsizetype largestPiece = 0;
    bool destroysExchangeOnData = false;
};

} // namespace

/// Downloads over sockets of this machine.
class NetworkDownloadsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    static void aWholeFile()
    {
        Fixture f;
        f.server.reply = answerWith("200 OK", "archive");
        f.get();
        QVERIFY(f.ends.empty());
        QTRY_VERIFY(f.hasEndedWith(End::Complete));
        QCOMPARE(f.begins, std::vector<qint64>{0});
        QCOMPARE(f.received, "archive");
        const QByteArray request = f.server.received.toLower();
        QVERIFY(request.startsWith("get /api http/1.1\r\n"));
        QVERIFY(!request.contains("\r\naccept-encoding:"));
        QVERIFY(!request.contains("\r\nrange:"));
        QVERIFY(!request.contains("cookie"));
    }

    static void aLargeFileComesInPieces()
    {
        const QByteArray large = QByteArray(5'000'000, 'x') + "end";
        Fixture f;
        f.server.reply = answerWith("200 OK", large);
        f.get();
        QTRY_VERIFY(f.hasEndedWith(End::Complete));
        QVERIFY(f.received == large);
        QVERIFY(f.largestPiece <= 65'536);
    }

    static void theRestOfAFile()
    {
        Fixture f;
        f.server.reply = partWith("bytes 4-6/7", "ive");
        f.get(4);
        QTRY_VERIFY(f.hasEndedWith(End::Complete));
        QCOMPARE(f.begins, std::vector<qint64>{4});
        QCOMPARE(f.received, "ive");
        QVERIFY(f.server.received.toLower().contains("\r\nrange: bytes=4-\r\n"));
    }

    static void withoutDescriptorsItIsBroken()
    {
        Fixture f;
        const NoDescriptors none;
        f.get();
        QVERIFY(f.ends.empty());
        QTRY_VERIFY(f.hasEndedWith(End::Broken));
        QVERIFY(f.isUntouched());
    }

    static void aServerWithoutRangesSendsTheWholeFile()
    {
        Fixture f;
        f.server.reply = answerWith("200 OK", "archive");
        f.get(4);
        QTRY_VERIFY(f.hasEndedWith(End::Complete));
        QCOMPARE(f.begins, std::vector<qint64>{0});
        QCOMPARE(f.received, "archive");
    }

    static void anotherRange()
    {
        for (const QByteArray &answer :
             {partWith("bytes 3-6/7", "hive"), partWith("bytes 4-", "ive"), partWith("", "ive"),
              partWith("bytes 44444444444444444444-6/7", "ive"), partWith("pages 4-6/7", "ive"),
              answerWith("416 No", ""), answerWith("416 No", "text")}) {
            Fixture f;
            f.server.reply = answer;
            f.get(4);
            QTRY_VERIFY2(f.hasEndedWith(End::OtherRange), answer);
            QVERIFY(f.isUntouched());
        }
    }

    static void refusals()
    {
        for (const QByteArray &status : {QByteArray("404 Not Found"), QByteArray("401 No"),
                                         QByteArray("403 No"), QByteArray("204 Nothing")}) {
            Fixture f;
            f.server.reply = answerWith(status, status.startsWith("204") ? "" : "text");
            f.get();
            QTRY_VERIFY2(f.hasEndedWith(End::Refused), status);
            QVERIFY(f.isUntouched());
        }
    }

    static void temporaryServerErrors()
    {
        for (const QByteArray &status :
             {QByteArray("500 Trouble"), QByteArray("503 Busy"), QByteArray("429 Slower")}) {
            Fixture f;
            f.server.reply = answerWith(status, "text");
            f.get();
            QTRY_VERIFY2(f.hasEndedWith(End::Broken), status);
            QVERIFY(f.isUntouched());
        }
    }

    static void dataBeforeABreakIsDelivered()
    {
        Fixture f;
        f.server.reply = "HTTP/1.1 200 OK\r\nContent-Length: 7\r\n\r\narc";
        f.get();
        QTRY_COMPARE(f.received, "arc");
        f.server.socket->disconnectFromHost();
        QTRY_VERIFY(f.hasEndedWith(End::Broken));
        QCOMPARE(f.received, "arc");
    }

    static void anInactiveServerBreaksTheExchange()
    {
        for (const QByteArray &reply :
             {QByteArray(), QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 7\r\n\r\narc")}) {
            Fixture f(100ms);
            f.server.reply = reply;
            f.get();
            QTRY_VERIFY(f.hasEndedWith(End::Broken));
        }
    }

    static void aClosedPort()
    {
        Fixture f;
        f.get(QUrl(u"http://127.0.0.1:1/"_s), 0);
        QTRY_VERIFY(f.hasEndedWith(End::Broken));
    }

    static void forbiddenAddressesAreNotContacted()
    {
        Fixture f;
        f.get(QUrl(u"http://example.invalid/"_s), 0);
        QVERIFY(f.ends.empty());
        QTRY_VERIFY(f.hasEndedWith(End::Refused));
    }

    static void redirectsToForbiddenAddressesAreNotFollowed()
    {
        Fixture f;
        f.server.reply =
            "HTTP/1.1 302 Found\r\nLocation: http://example.invalid/\r\nContent-Length: 0\r\n\r\n";
        f.get();
        QTRY_VERIFY(f.hasEndedWith(End::Refused));
        QVERIFY(f.isUntouched());
    }

    static void redirectsWithinThisMachineAreFollowed()
    {
        ScriptedServer target;
        target.reply = partWith("bytes 4-6/7", "ive");
        Fixture f;
        f.server.reply = "HTTP/1.1 302 Found\r\nLocation: " + target.url().toEncoded() +
                         "\r\nContent-Length: 4\r\n\r\ntext";
        f.get(4);
        QTRY_VERIFY(f.hasEndedWith(End::Complete));
        QCOMPARE(f.received, "ive");
        QVERIFY(target.received.toLower().contains("\r\nrange: bytes=4-\r\n"));
    }

    static void compressedContentIsNotDecompressed()
    {
        Fixture f;
        f.server.reply = "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 6\r\n\r\npacked";
        f.get();
        QTRY_VERIFY(f.hasEndedWith(End::Complete));
        QCOMPARE(f.received, "packed");
    }

    static void destroyingAnExchangeEndsIt()
    {
        Fixture f;
        f.get();
        QTRY_VERIFY(f.server.socket && f.server.isWhole());
        f.exchange.reset();
        QTRY_COMPARE(f.server.socket->state(), QAbstractSocket::UnconnectedState);
        QVERIFY(f.ends.empty());
        Fixture forbidden;
        forbidden.get(QUrl(u"http://example.invalid/"_s), 0);
        forbidden.exchange.reset();
        QCoreApplication::processEvents();
        QVERIFY(forbidden.ends.empty());
    }

    static void theReceiverMayDestroyTheExchange()
    {
        Fixture f;
        f.destroysExchangeOnData = true;
        f.server.reply = "HTTP/1.1 200 OK\r\nContent-Length: 9000000\r\n\r\n" + QByteArray(300'000, 'x');
        f.get();
        QTRY_VERIFY(!f.received.isEmpty());
        QTRY_COMPARE(f.server.socket->state(), QAbstractSocket::UnconnectedState);
        QVERIFY(f.received.size() <= 65'536);
        QVERIFY(f.ends.empty());
    }
};

ORVANE_TEST(NetworkDownloadsTest, QCoreApplication)
#include "NetworkDownloadsTest.moc"
