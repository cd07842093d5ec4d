// SPDX-License-Identifier: GPL-3.0-or-later
#include "NetworkHttpFixture.h"
#include "Support/TestProgram.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// What servers of this machine answer, and where they redirect to.
class NetworkAnswersTest : public QObject
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

    static void brokenAnswersAreIgnored()
    {
        for (const QByteArray &reply :
             {QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nab"), QByteArray("nonsense\r\n\r\n")}) {
            NetworkHttpFixture f;
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
            NetworkHttpFixture f;
            f.server.reply = reply;
            f.server.closes = true;
            f.send();
            QTRY_VERIFY2(f.isAnswered(), reply);
            QVERIFY2(!f.answer, reply);
            QCOMPARE(f.server.received.count(" /api HTTP/1.1\r\n"), 1);
            QCOMPARE(f.server.connections, 1);
        }
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
        NetworkHttpFixture f;
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
        NetworkHttpFixture f;
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
        NetworkHttpFixture f;
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
            NetworkHttpFixture f;
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
        NetworkHttpFixture f;
        f.server.reply =
            "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 4\r\n\r\n\x1f\x8b\x08z";
        f.send();
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(f.answer);
        QCOMPARE(f.answer->body, "\x1f\x8b\x08z");
        QVERIFY(!f.server.received.toLower().contains("accept-encoding"));
    }

    static void redirectsToUnsafePlacesAreNotFollowed()
    {
        for (const QByteArray &target :
             {QByteArray("http://example.invalid/"), QByteArray("http://localhost/"),
              QByteArray("http://a:b@127.0.0.1/"), QByteArray("ftp://127.0.0.1/"),
              QByteArray("file:///etc/passwd"), QByteArray("http://[::1"), QByteArray("https://")}) {
            NetworkHttpFixture f;
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
            NetworkHttpFixture f;
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
        NetworkHttpFixture f;
        f.server.standingReply = "HTTP/1.1 307 Go\r\nLocation: /api\r\nContent-Length: 0\r\n\r\n";
        f.send();
        QTRY_VERIFY(f.isAnswered());
        QVERIFY(!f.answer);
        QCOMPARE(f.server.connections, 6);
    }
};

ORVANE_TEST(NetworkAnswersTest, QCoreApplication)
#include "NetworkAnswersTest.moc"
