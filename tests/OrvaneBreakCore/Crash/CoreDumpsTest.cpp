// SPDX-License-Identifier: GPL-3.0-or-later
#include "CoreDumpExport.h"
#include "Support/ManualRunLoop.h"
#include "Support/ScratchFolder.h"
#include "Support/TestProgram.h"
#include "SystemReports.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr FileDate firstCrash{1'800'000'000, 0};
constexpr FileDate lastCrash{1'800'000'004, 123'000};

/// A journal with entries of five crashes, two of them of this program.
class RecordedJournal
{
public:
    RecordedJournal()
    {
        std::filesystem::create_directory(path());
        // After QProcess, which starts children with vfork(), ThreadSanitizer misses all threads.
        const std::string output = "--output=" + (path() / "recorded.journal").string();
        const int status = runInChild([&] {
            setenv("SYSTEMD_LOG_LEVEL", "err", 1);
            return execl(ORVANE_JOURNAL_REMOTE, ORVANE_JOURNAL_REMOTE, output.c_str(),
                         ORVANE_FIXTURES "/core-dumps.export", nullptr);
        });
        if (status != 0)
            qFatal("cannot make a journal; is systemd-journal-remote installed?");
    }

    [[nodiscard]] CoreDumpQuery query(const FileDate &after = FileDate::distantPast()) const
    {
        return {path(), "/opt/OrvaneBreak/bin/orvanebreak", 1000, after};
    }

    [[nodiscard]] std::filesystem::path path() const { return m_folder.path("journal"); }
    [[nodiscard]] std::filesystem::path reports() const { return m_folder.path("state/reports"); }
    [[nodiscard]] QStringList reportNames() const
    {
        return QDir(QString::fromStdString(reports().string())).entryList(QDir::Files, QDir::Name);
    }

private:
    ScratchFolder m_folder;
};

QList<FileDate> dates(const QList<CoreDump> &dumps)
{
    QList<FileDate> result;
    for (const CoreDump &dump : dumps)
        result.append(dump.date);
    return result;
}

} // namespace

class CoreDumpsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ownCrashesAreFoundNewestFirst()
    {
        const RecordedJournal journal;
        const QList<CoreDump> dumps = readCoreDumps(journal.query(), {});
        QCOMPARE(dates(dumps), (QList<FileDate>{lastCrash, firstCrash}));
        QCOMPARE(dumps.first().signal, 6);
        QCOMPARE(dumps.first().signalName, u"SIGABRT"_s);
        QVERIFY(dumps.last().description.contains("#1  0x00007f3a2c03bfb2 raise (libc.so.6 + 0x3bfb2)\n"_L1));
    }

    void onlyLaterCrashesCount()
    {
        const RecordedJournal journal;
        QCOMPARE(dates(readCoreDumps(journal.query(firstCrash), {})), QList<FileDate>{lastCrash});
        QVERIFY(readCoreDumps(journal.query(lastCrash), {}).isEmpty());
    }

    void theSearchCanBeStopped()
    {
        const RecordedJournal journal;
        std::stop_source stop;
        stop.request_stop();
        QVERIFY(readCoreDumps(journal.query(), stop.get_token()).isEmpty());
    }

    void withoutAJournalNothingIsFound()
    {
        const ScratchFolder folder;
        CoreDumpQuery query{folder.path("."), "/bin/true", 0, FileDate::distantPast()};
        QVERIFY(readCoreDumps(query, {}).isEmpty());
        query.journal = folder.path("missing");
        QVERIFY(readCoreDumps(query, {}).isEmpty());
        ScratchFolder::writeTo(folder.path("damaged.journal"), "no journal at all");
        query.journal = folder.path(".");
        QVERIFY(readCoreDumps(query, {}).isEmpty());
    }

    void theReportDoesNotNameTheUser()
    {
        const RecordedJournal journal;
        for (const CoreDump &dump : readCoreDumps(journal.query(), {})) {
            const QString text = coreDumpReport(dump, "/home/anna/bin/orvanebreak", "/home/anna", "anna");
            QVERIFY2(!text.contains("anna"_L1) && !text.contains("secret"_L1), qPrintable(text));
            QVERIFY(text.contains("Executable: ~/bin/orvanebreak\n"_L1));
            QVERIFY(text.contains("Date: 2027-01-15T08:00:0"_L1));
            QCOMPARE(summarizeSystemReport(text).message,
                     u"Termination Signal: %1 %2"_s.arg(dump.signal).arg(dump.signalName));
        }
    }

    void theExportWaitsAndWritesOnce()
    {
        const RecordedJournal journal;
        ManualRunLoop runLoop;
        int exported = 0;
        for (const int expected : {1, 1}) {
            CoreDumpExport coreDumps(runLoop, journal.query(), journal.reports());
            coreDumps.start(FileDate::distantPast(), [&exported] { ++exported; });
            QVERIFY(journal.reportNames().isEmpty() == (exported == 0));
            runLoop.advance(20s);
            QVERIFY(QTest::qWaitFor([&] { return exported == expected; }));
        }
        QCOMPARE(exported, 1);
        QCOMPARE(journal.reportNames(), (QStringList{u"OrvaneBreak-2027-01-15T08:00:00.000000000Z.crash"_s,
                                                     u"OrvaneBreak-2027-01-15T08:00:04.000123000Z.crash"_s}));
        const auto sent = readSystemReports(journal.reports(), FileDate::distantPast());
        QCOMPARE(sent->reports.size(), 2);
    }

    void withoutReportsNoFolderIsCreated()
    {
        const RecordedJournal journal;
        ManualRunLoop runLoop;
        {
            CoreDumpExport coreDumps(runLoop, journal.query(lastCrash), journal.reports());
            coreDumps.start(lastCrash, [] { QFAIL("nothing was exported"); });
            runLoop.advance(20s);
        }
        QVERIFY(!std::filesystem::exists(journal.reports()));
    }

    void writesThatFail()
    {
        const ScratchFolder folder;
        const CoreDump dump{firstCrash, 11, u"SIGSEGV"_s, u"text"_s};
        ScratchFolder::writeTo(folder.path("file"), "in the way");
        QVERIFY(!writeCoreDumpReport(folder.path("file"), dump, u"x"_s, lastCrash));
        QVERIFY(writeCoreDumpReport(folder.path("reports"), dump, u"x"_s, lastCrash));
        QVERIFY(!writeCoreDumpReport(folder.path("reports"), dump, u"y"_s, lastCrash));
        const auto status =
            ScratchFolder::status(folder.path("reports/OrvaneBreak-2027-01-15T08:00:00.000000000Z.crash"));
        QCOMPARE(status.st_mode & 07777U, 0600U);
        QCOMPARE(FileDate::of(status.st_mtim), lastCrash);
    }
};

ORVANE_TEST(CoreDumpsTest, QCoreApplication)
#include "CoreDumpsTest.moc"
