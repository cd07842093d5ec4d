// SPDX-License-Identifier: GPL-3.0-or-later
#include "SystemReports.h"

#include "FileDescriptor.h"
#include "Support/ScratchFolder.h"
#include "Support/TestProgram.h"

#include <QTest>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

/// A folder of reports with given dates.
class ReportFolder
{
public:
    void add(const std::string &name, const QByteArray &text, const FileDate &date) const
    {
        ScratchFolder::writeTo(path() / name, text);
        setDate(name, date);
    }

    void setDate(const std::string &name, const FileDate &date) const
    {
        const timespec times[2] = {{date.seconds, date.nanoseconds}, {date.seconds, date.nanoseconds}};
        if (utimensat(AT_FDCWD, (path() / name).c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
            qFatal("cannot set a date");
    }

    /// The messages of the reports later than `lastScan`, sorted.
    [[nodiscard]] QStringList messages(const FileDate &lastScan) const
    {
        QStringList result;
        const std::optional<SystemReports> found = readSystemReports(path(), lastScan);
        for (const SystemReport &report : found.value().reports)
            result.append(report.message);
        result.sort();
        return result;
    }

    [[nodiscard]] std::filesystem::path path() const { return folder.path("."); }

    ScratchFolder folder;
};

constexpr FileDate noon{1'800'000'000, 500};

constexpr FileDate after(const FileDate &date, int nanoseconds)
{
    return {date.seconds, date.nanoseconds + nanoseconds};
}

} // namespace

class SystemReportsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theNameDecides()
    {
        const ReportFolder reports;
        for (const char *name : {"OrvaneBreak-1.crash", "OrvaneBreak.ips", "Orvane Break 2.ips",
                                 "OrvaneBreak.crash.ips", "OrvaneBreakHelper.crash"})
            reports.add(name, QByteArray("Exception of ") + name, noon);
        for (const char *name :
             {"orvanebreak.crash", "Other-OrvaneBreak.crash", "OrvaneBreak.crash~", "OrvaneBreak",
              "OrvaneBreak.txt", "OrvaneBreak.CRASH", "Orvane  Break.ips", ".OrvaneBreak.ips"})
            reports.add(name, QByteArray("Exception of ") + name, noon);
        QCOMPARE(reports.messages(FileDate::distantPast()),
                 (QStringList{u"Exception of Orvane Break 2.ips"_s, u"Exception of OrvaneBreak-1.crash"_s,
                              u"Exception of OrvaneBreak.crash.ips"_s, u"Exception of OrvaneBreak.ips"_s,
                              u"Exception of OrvaneBreakHelper.crash"_s}));
    }

    void nothingElseIsOpened()
    {
        const ReportFolder reports;
        reports.add("OrvaneBreak-old.crash", "Exception", noon);
        reports.add("OrvaneBreak-new.crash", "Exception", after(noon, 1));
        reports.add("Other.crash", "Exception", after(noon, 1));
        const FileDescriptor watch(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
        QVERIFY(inotify_add_watch(watch.get(), reports.path().c_str(), IN_OPEN) >= 0);
        QCOMPARE(reports.messages(noon).size(), 1);
        alignas(inotify_event) char buffer[4096];
        const ssize_t length = read(watch.get(), buffer, sizeof buffer);
        QStringList opened;
        for (ssize_t at = 0; at < length;) {
            const auto *event = reinterpret_cast<const inotify_event *>(buffer + at);
            if (event->len > 0)
                opened.append(QString::fromLatin1(event->name));
            at += static_cast<ssize_t>(sizeof *event + event->len);
        }
        QCOMPARE(opened, QStringList{u"OrvaneBreak-new.crash"_s});
    }

    void datesAreComparedToTheNanosecond()
    {
        const ReportFolder reports;
        reports.add("OrvaneBreak-1.crash", "Exception before", after(noon, -1));
        reports.add("OrvaneBreak-2.crash", "Exception at noon", noon);
        reports.add("OrvaneBreak-3.crash", "Exception after", after(noon, 1));
        reports.add("OrvaneBreak-4.crash", "Exception later", after(noon, 2));
        QCOMPARE(reports.messages(noon), (QStringList{u"Exception after"_s, u"Exception later"_s}));
        QCOMPARE(readSystemReports(reports.path(), noon)->newest, after(noon, 2));
        QVERIFY(reports.messages(after(noon, 2)).isEmpty());
        QCOMPARE(readSystemReports(reports.path(), after(noon, 2))->newest, after(noon, 2));
    }

    void unreadableReportsDoNotAdvanceTheDate()
    {
        const ReportFolder reports;
        reports.add("OrvaneBreak-1.crash", "Exception", noon);
        reports.add("OrvaneBreak-2.crash", "Exception \xff\xfe", after(noon, 1));
        reports.add("OrvaneBreak-3.crash", "Exception \xc3", after(noon, 1));
        std::filesystem::create_directory(reports.path() / "OrvaneBreak-4.crash");
        QCOMPARE(mkfifo((reports.path() / "OrvaneBreak-5.crash").c_str(), 0600), 0);
        std::filesystem::create_symlink("nowhere", reports.path() / "OrvaneBreak-6.crash");
        for (const char *name : {"OrvaneBreak-4.crash", "OrvaneBreak-5.crash", "OrvaneBreak-6.crash"})
            reports.setDate(name, after(noon, 1));
        const std::optional<SystemReports> found = readSystemReports(reports.path(), FileDate::distantPast());
        QCOMPARE(found->reports.size(), 1);
        QCOMPARE(found->newest, noon);
    }

    void hugeReportsAreCut()
    {
        const ReportFolder reports;
        reports.add("OrvaneBreak-1.crash", "Exception\n" + QByteArray("\u20ac").repeated(400'000), noon);
        std::filesystem::resize_file(reports.path() / "OrvaneBreak-1.crash", std::uintmax_t{1} << 32U);
        reports.setDate("OrvaneBreak-1.crash", noon);
        const std::optional<SystemReports> found = readSystemReports(reports.path(), FileDate::distantPast());
        QCOMPARE(found->reports.size(), 1);
        QCOMPARE(found->reports.first().message, u"Exception"_s);
        QCOMPARE(found->reports.first().stack, u"Exception\n"_s + QString(17'990, u'\u20ac'));
        QCOMPARE(found->newest, noon);
    }

    void invalidDatesAreTheDistantPast()
    {
        const ReportFolder reports;
        reports.add("OrvaneBreak-1.crash", "Exception", {FileDate::distantPast().seconds - 1, 0});
        // Not every file system can store that date.
        struct stat status = {};
        stat((reports.path() / "OrvaneBreak-1.crash").c_str(), &status);
        if (status.st_mtim.tv_sec < FileDate::distantPast().seconds)
            QVERIFY(reports.messages(FileDate::distantPast()).isEmpty());
        const timespec far{std::numeric_limits<time_t>::max(), 0};
        QCOMPARE(FileDate::of(far), FileDate::distantPast());
    }

    void noFolderIsNoScan()
    {
        const ReportFolder reports;
        QVERIFY(!readSystemReports(reports.path() / "missing", noon));
        reports.add("file", "in the way", noon);
        QVERIFY(!readSystemReports(reports.path() / "file", noon));
    }

    void theMessageIsTheFirstLineAboutTheCrash_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("message");
        const QString none = u"Rapport système macOS"_s;
        QTest::newRow("exception") << u"a\n\n  Exception Type: X \nTermination"_s
                                   << u"  Exception Type: X "_s;
        QTest::newRow("termination") << u"a\nxTerminationx\nException"_s << u"xTerminationx"_s;
        QTest::newRow("last line") << u"a\nException"_s << u"Exception"_s;
        QTest::newRow("carriage return") << u"Exception\r\nb"_s << u"Exception\r"_s;
        QTest::newRow("none") << u"exception\nTERMINATION"_s << none;
        QTest::newRow("empty") << QString() << none;
    }

    void theMessageIsTheFirstLineAboutTheCrash()
    {
        QFETCH(const QString, text);
        QFETCH(const QString, message);
        const SystemReport report = summarizeSystemReport(text);
        QCOMPARE(report.message, message);
        QCOMPARE(report.stack, text);
    }

    void longTextsAreCutBetweenCharacters_data()
    {
        QTest::addColumn<QString>("character");
        QTest::newRow("ASCII") << u"x"_s;
        QTest::newRow("accent") << u"e\u0301"_s;
        QTest::newRow("outside of the first plane") << u"\U0001F441"_s;
        QTest::newRow("family") << u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s;
    }

    void longTextsAreCutBetweenCharacters()
    {
        QFETCH(const QString, character);
        QCOMPARE(summarizeSystemReport(character.repeated(18'000)).stack, character.repeated(18'000));
        QCOMPARE(summarizeSystemReport(character.repeated(18'001)).stack, character.repeated(18'000));
    }

    void textsAreParsedBack_data()
    {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<int>("nanoseconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("1970") << 0LL << 0 << u"1970-01-01T00:00:00.000000000Z"_s;
        QTest::newRow("nanosecond") << 1'800'000'000LL << 1 << u"2027-01-15T08:00:00.000000001Z"_s;
        QTest::newRow("before 1970") << -1LL << 999'999'999 << u"1969-12-31T23:59:59.999999999Z"_s;
        QTest::newRow("distant past")
            << FileDate::distantPast().seconds * 1LL << 0 << u"0001-01-01T00:00:00.000000000Z"_s;
        QTest::newRow("far") << 253'402'300'799LL << 5 << u"9999-12-31T23:59:59.000000005Z"_s;
    }

    void textsAreParsedBack()
    {
        QFETCH(const qint64, seconds);
        QFETCH(const int, nanoseconds);
        QFETCH(const QString, text);
        const FileDate date{seconds, nanoseconds};
        QCOMPARE(date.text(), text);
        QCOMPARE(FileDate::parse(text), date);
    }

    void otherFormats()
    {
        QCOMPARE(FileDate::parse(u"1970-01-01T01:00:00.5+01:00"_s), (FileDate{0, 500'000'000}));
        QCOMPARE(FileDate::parse(u"1970-01-01T00:00:01Z"_s), (FileDate{1, 0}));
        for (const char *text :
             {"", "yesterday", "1970-01-01", "1970-01-01T00:00:00", "1970-13-01T00:00:00Z",
              "1970-01-01T00:00:00.1234567890Z", "1970-01-01T00:00:00.Z", "1970-01-01T00:00:00.5",
              "1970-01-01T00:00:00Z ", "1970-01-01T00:00:00Z\n", "1970-01-01T00:00:00+0100",
              "1970-01-01 00:00:00Z", "197x-01-01T00:00:00Z", "1970-01-01T00:00:00.5xZ"})
            QVERIFY2(!FileDate::parse(QString::fromLatin1(text)), text);
    }
};

ORVANE_TEST(SystemReportsTest, QCoreApplication)
#include "SystemReportsTest.moc"
