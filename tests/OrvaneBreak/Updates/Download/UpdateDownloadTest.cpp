// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/TestProgram.h"
#include "UpdateDownloadFixture.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using End = Downloads::End;
using Fixture = UpdateDownloadFixture;

/// Downloading an archive from a fake server.
class UpdateDownloadTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    static void inOneAttempt()
    {
        Fixture f;
        f.start();
        QCOMPARE(f.downloads.requests.constFirst().url, QUrl(u"https://example.org/archive"_s));
        QCOMPARE(f.offset(), 0);
        f.downloads.begin(0);
        f.downloads.send("0123");
        QCOMPARE(ScratchFolder::status(f.folder).st_mode & 07777U, 0700U);
        QCOMPARE(ScratchFolder::status(f.partialFile()).st_mode & 07777U, 0600U);
        QVERIFY(f.partialFile().filename().string().starts_with("1.3-"));
        f.downloads.send("456789");
        f.downloads.end(End::Complete);
        QVERIFY(f.isFinishedWith(archive));
        QCOMPARE(f.progress, (std::vector<qint64>{4, 10}));
        // A process that is killed while it installs the archive need not download it again.
        QCOMPARE(ScratchFolder::bytesOf(f.partialFile()), archive);
        f.download.discard();
        QVERIFY(f.names().isEmpty());
    }

    static void brokenTwiceAndResumed()
    {
        Fixture f;
        f.start();
        f.downloads.answer("0123", End::Broken);
        f.runLoop.advance(900ms);
        QCOMPARE(f.requests(), 1);
        f.runLoop.advance(600ms);
        QCOMPARE(f.requests(), 2);
        QCOMPARE(f.offset(), 4);
        f.downloads.answer("45", End::Broken);
        f.runLoop.advance(2s);
        QCOMPARE(f.offset(), 6);
        f.downloads.answer("6789", End::Complete);
        QVERIFY(f.isFinishedWith(archive));
    }

    static void aServerThatStartsOver()
    {
        Fixture f;
        f.start();
        f.downloads.answer("xxxx", End::Broken);
        f.runLoop.advance(2s);
        QCOMPARE(f.offset(), 4);
        f.downloads.begin(0);
        f.downloads.send(archive);
        f.downloads.end(End::Complete);
        QVERIFY(f.isFinishedWith(archive));
        QCOMPARE(f.progress, (std::vector<qint64>{4, 0, 10}));
    }

    static void aServerWithAnotherRange()
    {
        Fixture f;
        f.start();
        f.downloads.answer("xxxx", End::Broken);
        f.runLoop.advance(2s);
        f.downloads.end(End::OtherRange);
        f.runLoop.advance(2s);
        QCOMPARE(f.requests(), 3);
        QCOMPARE(f.offset(), 0);
        f.downloads.answer(archive, End::Complete);
        QVERIFY(f.isFinishedWith(archive));
    }

    static void tooLong()
    {
        Fixture f;
        f.start();
        f.downloads.begin(0);
        f.downloads.send("01234567");
        f.downloads.send("89x");
        QVERIFY(f.hasFailed());
        QVERIFY(f.names().isEmpty());
    }

    static void moreAfterTheWholeArchive()
    {
        Fixture f;
        f.start();
        f.downloads.begin(0);
        f.downloads.send(archive);
        f.downloads.send("x");
        QVERIFY(f.hasFailed());
        QVERIFY(f.names().isEmpty());
    }

    static void alwaysTooShort()
    {
        Fixture f;
        f.start();
        f.downloads.answer("0123", End::Complete);
        for (int attempt = 0; attempt < 5; ++attempt) {
            QCOMPARE(f.completions, 0);
            f.runLoop.advance(20s);
            if (f.offset() == 4) {
                f.downloads.end(End::OtherRange);
            } else {
                QCOMPARE(f.offset(), 0);
                f.downloads.answer("0123", End::Complete);
            }
        }
        QVERIFY(f.hasFailed());
        QCOMPARE(f.requests(), 6);
    }

    static void failsAfterFiveAttemptsWithoutProgress()
    {
        Fixture f;
        f.start();
        f.downloads.answer("0", End::Broken);
        f.runLoop.advance(2s);
        for (const auto pause : {1s, 2s, 4s, 8s}) {
            f.downloads.end(End::Broken);
            const int before = f.requests();
            f.runLoop.advance(pause - 1ms);
            QCOMPARE(f.requests(), before);
            f.runLoop.advance(600ms);
            QCOMPARE(f.requests(), before + 1);
        }
        f.downloads.end(End::Broken);
        QVERIFY(f.hasFailed());
        QCOMPARE(ScratchFolder::bytesOf(f.partialFile()), "0");
    }

    static void attemptsWithProgressDoNotCount()
    {
        Fixture f;
        f.start();
        for (const char digit : archive) {
            f.downloads.answer(QByteArray(1, digit), End::Broken);
            for (int failure = 0; failure < 4 && digit != '9'; ++failure) {
                f.runLoop.advance(20s);
                f.downloads.end(End::Broken);
            }
            f.runLoop.advance(20s);
        }
        QVERIFY(f.isFinishedWith(archive));
    }

    static void theTimeoutOfTwoHours()
    {
        Fixture f;
        f.start();
        f.downloads.begin(0);
        f.downloads.send("0123");
        f.runLoop.advance(2h - 1s);
        QVERIFY(f.downloads.requests.constLast().isOpen());
        f.runLoop.advance(2min);
        QVERIFY(f.hasFailed());
        QCOMPARE(ScratchFolder::bytesOf(f.partialFile()), "0123");
    }

    static void refusedAndForbidden()
    {
        Fixture f;
        f.start();
        f.downloads.end(End::Refused);
        QVERIFY(f.hasFailed());
        for (const QString &address : {u"http://example.org/"_s, u"file:///etc/passwd"_s, QString()}) {
            Fixture forbidden;
            forbidden.start({QUrl(address), archive.size(), u"1.3"_s});
            QVERIFY(forbidden.hasFailed());
            QCOMPARE(forbidden.requests(), 0);
        }
        Fixture empty;
        empty.start({QUrl(u"https://example.org/"_s), 0, u"1.3"_s});
        QVERIFY(empty.hasFailed());
    }

    static void cancelledAndStartedAgain()
    {
        Fixture f;
        f.start();
        f.downloads.begin(0);
        f.downloads.send("0123");
        f.download.cancel();
        QVERIFY(!f.downloads.requests.constLast().isOpen());
        QVERIFY(f.runLoop.timers().empty());
        f.start();
        QCOMPARE(f.offset(), 4);
        f.downloads.answer("456789", End::Complete);
        f.download.cancel();
        QCoreApplication::processEvents();
        QCOMPARE(f.completions, 0);
        f.start();
        QCOMPARE(f.requests(), 2);
        QVERIFY(f.isFinishedWith(archive));
    }

    static void aLateCompletionIsDropped()
    {
        Fixture f;
        f.start();
        f.downloads.end(End::Refused);
        f.start();
        QCoreApplication::processEvents();
        QCOMPARE(f.completions, 0);
        f.downloads.answer(archive, End::Complete);
        QVERIFY(f.isFinishedWith(archive));
    }
};

ORVANE_TEST(UpdateDownloadTest, QCoreApplication)
#include "UpdateDownloadTest.moc"
