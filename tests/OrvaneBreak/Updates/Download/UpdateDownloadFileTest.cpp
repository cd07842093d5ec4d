// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/SystemCalls.h"
#include "Support/TestProgram.h"
#include "UpdateDownloadFixture.h"

#include <QRegularExpression>
#include <QTest>

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using End = Downloads::End;
using Fixture = UpdateDownloadFixture;

/// The partial file of a download.
class UpdateDownloadFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    static void aCompletePartialFileIsNotDownloaded()
    {
        Fixture f;
        f.leave("0123");
        ScratchFolder::writeTo(f.partialFile(), archive);
        f.start();
        QCOMPARE(f.requests(), 1);
        QVERIFY(f.isFinishedWith(archive));
    }

    static void twoSessionsDoNotWriteToOneFile()
    {
        Fixture f;
        f.start();
        f.downloads.begin(0);
        f.downloads.send("0123");
        UpdateDownload other(f.downloads, f.runLoop, f.folder);
        bool isFinished = false;
        other.start({QUrl(u"https://example.org/archive"_s), archive.size(), u"1.3"_s}, {},
                    [&](const std::optional<QByteArray> &bytes) { isFinished = !bytes; });
        QTRY_VERIFY(isFinished);
        QCOMPARE(f.requests(), 1);
        f.downloads.send("456789");
        f.downloads.end(Downloads::End::Complete);
        QVERIFY(f.isFinishedWith(archive));
    }

    static void thePartialFileOfAnotherDownloadIsRemoved()
    {
        const UpdateDownload::Request same{QUrl(u"https://example.org/archive"_s), archive.size(), u"1.3"_s};
        auto otherLength = same;
        otherLength.length = 9;
        auto otherAddress = same;
        otherAddress.address = QUrl(u"https://example.org/other"_s);
        auto otherVersion = same;
        otherVersion.version = u"../1.4"_s;
        for (const auto &request : {otherLength, otherAddress, otherVersion}) {
            Fixture f;
            f.leave("0123");
            const QStringList before = f.names();
            f.start(request);
            QCOMPARE(f.offset(), 0);
            QCOMPARE(f.names().size(), 1);
            QVERIFY(f.names() != before);
            QCOMPARE(f.scratch.names(), QStringList{u"cache"_s});
        }
        Fixture tooLarge;
        tooLarge.leave("0123");
        ScratchFolder::writeTo(tooLarge.partialFile(), archive + "x");
        tooLarge.start();
        QCOMPARE(tooLarge.offset(), 0);
    }

    static void aLinkIsNotFollowed_data()
    {
        QTest::addColumn<bool>("isSymbolic");
        QTest::newRow("symbolic") << true;
        QTest::newRow("hard") << false;
    }

    static void aLinkIsNotFollowed()
    {
        QFETCH(bool, isSymbolic);
        Fixture f;
        f.leave("0123");
        const std::filesystem::path victim = f.scratch.path("victim");
        ScratchFolder::writeTo(victim, "abc");
        const std::filesystem::path file = f.partialFile();
        std::filesystem::remove(file);
        if (isSymbolic)
            std::filesystem::create_symlink(victim, file);
        else
            std::filesystem::create_hard_link(victim, file);
        f.start();
        QCOMPARE(f.offset(), 0);
        f.downloads.answer(archive, End::Complete);
        QVERIFY(f.isFinishedWith(archive));
        QCOMPARE(ScratchFolder::bytesOf(victim), "abc");
    }

    static void somebodyElsesFileIsReplaced()
    {
        if (geteuid() != 0)
            QSKIP("only root can change the owner of files");
        Fixture f;
        f.leave("0123");
        constexpr uid_t nobody = 65534;
        QCOMPARE(chown(f.partialFile().c_str(), nobody, nobody), 0);
        f.start();
        QCOMPARE(f.offset(), 0);
        QCOMPARE(ScratchFolder::status(f.partialFile()).st_uid, 0U);
        f.download.cancel();
        QCOMPARE(chown(f.folder.c_str(), nobody, nobody), 0);
        f.start();
        QVERIFY(f.hasFailed());
    }

    static void aFolderInPlaceOfTheFile()
    {
        Fixture f;
        f.leave("0123");
        const std::filesystem::path file = f.partialFile();
        std::filesystem::remove(file);
        std::filesystem::create_directory(file);
        f.start();
        QVERIFY(f.hasFailed());
    }

    static void aFolderThatCannotBeCreated()
    {
        Fixture f;
        ScratchFolder::writeTo(f.scratch.path("cache"), "a file");
        f.start();
        QVERIFY(f.hasFailed());
        QCOMPARE(f.requests(), 0);
    }

    static void aFullDisk()
    {
        const int status = runInChild([] {
            Fixture f;
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit = {6, 6};
            setrlimit(RLIMIT_FSIZE, &limit);
            f.start();
            f.downloads.answer("0123", End::Broken);
            f.runLoop.advance(2s);
            f.downloads.begin(4);
            f.downloads.send("456789");
            return f.hasFailed() && f.names().isEmpty() ? 0 : 1;
        });
        QCOMPARE(status, 0);
    }

    static void aDiskThatBreaks_data()
    {
        QTest::addColumn<int>("failures");
        QTest::newRow("disk broken") << SystemCalls::forEver;
        QTest::newRow("one I/O error") << 1;
        QTest::newRow("two I/O errors") << 2;
    }

    static void aDiskThatBreaks()
    {
        QFETCH(const int, failures);
        constexpr int wrong = 1;
        constexpr int unbroken = 2;
        int status = 0;
        for (int call = 1; status == 0 && call < 100; ++call) {
            Fixture f;
            f.leave("0123");
            status = runInChild([&] {
                SystemCalls::breakDiskBefore(call, failures);
                f.start();
                // The server starts over, and later has no such range.
                f.downloads.begin(0);
                f.downloads.send("012345");
                f.downloads.end(End::Broken);
                f.runLoop.advance(2s);
                f.downloads.end(End::OtherRange);
                f.runLoop.advance(2s);
                f.downloads.answer(archive, End::Complete);
                QCoreApplication::processEvents();
                if (f.completions != 1 || (f.result && f.result != archive))
                    return wrong;
                if (SystemCalls::count() >= call)
                    return 0;
                return f.result ? unbroken : wrong;
            });
        }
        QCOMPARE(status, unbroken);
    }
};

ORVANE_TEST(UpdateDownloadFileTest, QCoreApplication)
#include "UpdateDownloadFileTest.moc"
