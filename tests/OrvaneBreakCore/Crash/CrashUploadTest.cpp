// SPDX-License-Identifier: GPL-3.0-or-later
#include "CrashUpload.h"

#include "Bundle.h"
#include "CrashReporter.h"
#include "FileDate.h"
#include "FileDescriptor.h"
#include "SharedInstance.h"
#include "Support/FakeHttp.h"
#include "Support/MemoryPreferences.h"
#include "Support/ScratchFolder.h"
#include "Support/TestProgram.h"

#include <QTest>
#include <QTimer>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <functional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString lastScanKey = u"OBLastCrashScan"_s;

struct Fixture
{
    explicit Fixture(const QByteArray &information = R"({"CFBundleShortVersionString": "1.2.3"})")
    {
        ScratchFolder::writeTo(folder.path("Info.json"), information);
        bundle = std::make_unique<Bundle>(QString::fromStdString(folder.path(".").string()));
        places = {folder.path("pending-crash.txt"), folder.path("reports")};
        std::filesystem::create_directory(places.systemReports);
        upload = std::make_unique<CrashUpload>(
            CrashUpload::Services{http, preferences, *bundle, {14, 5, 1}, u"https://makers.invalid"_s},
            places);
    }

    void addReport(const std::string &name, const QByteArray &text) const
    {
        ScratchFolder::writeTo(places.systemReports / name, text);
    }

    /// Leaves the report of a process that ran for `lifetime`.
    void leaveReport(std::chrono::seconds lifetime) const
    {
        ScratchFolder::writeTo(places.pendingReport, "Signal 11\n---\n0 a");
        const timespec times[2] = {{1'800'000'000, 0}, {1'800'000'000 + lifetime.count(), 0}};
        if (utimensat(AT_FDCWD, places.pendingReport.c_str(), times, 0) != 0)
            qFatal("cannot set a date");
    }

    [[nodiscard]] FileDate dateOf(const std::string &name) const
    {
        return FileDate::of(ScratchFolder::status(places.systemReports / name).st_mtim);
    }

    [[nodiscard]] QStringList sent(const QString &member)
    {
        QStringList values;
        for (const FakeHttp::Request &request : http.requests)
            values.append(request.json().value(member).toString());
        values.sort();
        return values;
    }

    ScratchFolder folder;
    FakeHttp http;
    MemoryPreferences preferences;
    std::unique_ptr<Bundle> bundle;
    CrashUpload::Places places;
    std::unique_ptr<CrashUpload> upload;
};

} // namespace

class CrashUploadTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aReportHasSixMembers()
    {
        Fixture f;
        f.preferences.setValue(u"OBDeviceId"_s, u"SOME-DEVICE"_s);
        f.upload->send(u"error"_s, u"a \u00e9"_s, u"b\nc"_s);
        QCOMPARE(f.http.requests.size(), 1);
        const FakeHttp::Request &request = f.http.requests.first();
        QCOMPARE(request.url, QUrl(u"https://makers.invalid/api/crash.php"_s));
        QCOMPARE(request.limit, 8s);
        QCOMPARE(request.body,
                 QByteArray("{\"d\":\"SOME-DEVICE\",\"kind\":\"error\",\"message\":\"a \u00e9\","
                            "\"os\":\"macOS 14.5\",\"stack\":\"b\\nc\",\"v\":\"1.2.3\"}"));
        f.http.answer(std::nullopt);
        f.upload->send(u"crash"_s, {}, {});
        f.http.answer(HttpAnswer{500, "no"});
        QVERIFY(f.http.requests.isEmpty());
    }

    void unknownMembersAreQuestionMarks_data()
    {
        QTest::addColumn<QByteArray>("information");
        QTest::addColumn<QJsonValue>("device");
        QTest::newRow("absent") << QByteArray("{}") << QJsonValue(QJsonValue::Undefined);
        QTest::newRow("of another type")
            << QByteArray(R"({"CFBundleShortVersionString": 12})") << QJsonValue(12);
    }

    void unknownMembersAreQuestionMarks()
    {
        QFETCH(const QByteArray, information);
        QFETCH(const QJsonValue, device);
        Fixture f(information);
        f.preferences.setValue(u"OBDeviceId"_s, device);
        f.upload->send(u"crash"_s, u"m"_s, u"s"_s);
        QCOMPARE(f.sent(u"d"_s), QStringList{u"?"_s});
        QCOMPARE(f.sent(u"v"_s), QStringList{u"?"_s});
        QCOMPARE(f.preferences.value(u"OBDeviceId"_s), device);
    }

    void thePendingReportIsSentOnce_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("stack");
        QTest::newRow("whole") << QByteArray("Signal 11\n---\n0 a\n1 b") << u"Signal 11"_s << u"0 a\n1 b"_s;
        QTest::newRow("no separator") << QByteArray("Signal 11\n--\nx") << u"Signal 11\n--\nx"_s << QString();
        QTest::newRow("two separators") << QByteArray("m\n---\ns\n---\nt") << u"m"_s << u"s"_s;
        QTest::newRow("separators in a row") << QByteArray("m\n---\n---\nt") << u"m"_s << u"---\nt"_s;
        QTest::newRow("no stack") << QByteArray("m\n---\n") << u"m"_s << QString();
        QTest::newRow("not UTF-8") << QByteArray("Signal \xff\n---\n\xc3") << u"Signal \uFFFD"_s
                                   << u"\uFFFD"_s;
        QTest::newRow("long") << "mm\n---\n" + QByteArray("\u00e9").repeated(600'000) << u"mm"_s
                              << QString(qsizetype{512} * 1024 - 4, u'\u00e9');
    }

    void thePendingReportIsSentOnce()
    {
        QFETCH(const QByteArray, text);
        Fixture f;
        ScratchFolder::writeTo(f.places.pendingReport, text);
        f.upload->sendPendingCrash();
        QVERIFY(!std::filesystem::exists(f.places.pendingReport));
        f.upload->sendPendingCrash();
        QCOMPARE(f.http.requests.size(), 1);
        QCOMPARE(f.sent(u"kind"_s), QStringList{u"crash"_s});
        QTEST(f.sent(u"message"_s).first(), "message");
        QTEST(f.sent(u"stack"_s).first(), "stack");
    }

    void anEmptyReportIsNotSent()
    {
        Fixture f;
        f.upload->sendPendingCrash();
        ScratchFolder::writeTo(f.places.pendingReport, "");
        f.upload->sendPendingCrash();
        QVERIFY(f.http.requests.isEmpty());
        QVERIFY(!std::filesystem::exists(f.places.pendingReport));
    }

    /// Nobody can delete a file below /proc.
    void aReportThatCannotBeDeletedIsSentOnce()
    {
        const FileDescriptor file(memfd_create("report", MFD_CLOEXEC | MFD_ALLOW_SEALING));
        Fixture f;
        f.places.pendingReport = "/proc/self/fd/" + std::to_string(file.get());
        const CrashUpload::Services services{
            f.http, f.preferences, *f.bundle, {14, 5, 1}, u"https://m.invalid"_s};
        CrashUpload upload(services, f.places);
        for (const int seals : {0, F_SEAL_SHRINK | F_SEAL_WRITE}) {
            ScratchFolder::writeTo(f.places.pendingReport, "Signal 11\n---\n0 a");
            QVERIFY(fcntl(file.get(), F_ADD_SEALS, seals) == 0);
            upload.sendPendingCrash();
            upload.sendPendingCrash();
            QCOMPARE(f.http.requests.size(), 1);
        }
    }

    void afterAnEarlyCrashTheReportIsSentFirst()
    {
        Fixture f;
        f.leaveReport(9s);
        int answers = 0;
        QTimer::singleShot(0, this, [&] {
            QVERIFY(!std::filesystem::exists(f.places.pendingReport));
            QCOMPARE(f.sent(u"message"_s), QStringList{u"Signal 11"_s});
            ++answers;
            f.http.answer(std::nullopt);
        });
        f.upload->sendEarlyCrash();
        QCOMPARE(answers, 1);
        f.upload->sendPendingCrash();
        QVERIFY(f.http.requests.isEmpty());
    }

    void aReportStaysUntilItsRequestLeaves()
    {
        Fixture f;
        const QStringList files = f.folder.names();
        f.http.isConnected = false;
        f.leaveReport(1h);
        f.upload->sendPendingCrash();
        QCOMPARE(f.folder.names().size(), files.size() + 1);
        QVERIFY(f.http.requests.takeFirst().departure());
        QCOMPARE(f.folder.names(), files);
    }

    void aReportThatHasNotLeftIsSentByTheNextProcess()
    {
        for (const bool hasCrashed : {true, false}) {
            Fixture f;
            const QStringList files = f.folder.names();
            f.http.isConnected = false;
            f.leaveReport(1h);
            f.upload->sendPendingCrash();
            f.http.requests.clear();
            if (hasCrashed)
                f.leaveReport(1s);
            QTimer::singleShot(0, this, [&] {
                for (qsizetype answer = f.http.requests.size(); answer > 0; --answer)
                    f.http.answer(std::nullopt);
            });
            f.upload->sendEarlyCrash();
            f.upload->sendPendingCrash();
            QCOMPARE(f.folder.names(), files);
            QCOMPARE(f.http.requests.size(), hasCrashed ? 0 : 1);
            f.http.requests.clear();
            f.upload->sendPendingCrash();
            QVERIFY(f.http.requests.isEmpty());
        }
    }

    void aReportWhoseServerIsNotThereIsNotSentAgain()
    {
        Fixture f;
        const QStringList files = f.folder.names();
        f.http.isConnected = false;
        f.leaveReport(1h);
        f.upload->sendPendingCrash();
        f.http.answer(std::nullopt);
        QCOMPARE(f.folder.names(), files);
    }

    void noOtherReportIsWaitedFor()
    {
        Fixture f;
        f.upload->sendEarlyCrash();
        for (const std::chrono::seconds lifetime : {10s, 86'400s, -1s}) {
            f.leaveReport(lifetime);
            f.upload->sendEarlyCrash();
            QVERIFY(f.http.requests.isEmpty());
            QVERIFY(std::filesystem::exists(f.places.pendingReport));
        }
    }

    void newSystemReportsAreSentOnce()
    {
        Fixture f;
        f.addReport("OrvaneBreak-1.crash", "first Exception\nx");
        f.addReport("OrvaneBreak-2.ips", "nothing special");
        f.addReport("Other.crash", "Exception");
        const FileDate newest = std::max(f.dateOf("OrvaneBreak-1.crash"), f.dateOf("OrvaneBreak-2.ips"));
        f.upload->sendSystemCrashReports();
        QCOMPARE(f.sent(u"message"_s), (QStringList{u"Rapport système macOS"_s, u"first Exception"_s}));
        QCOMPARE(f.sent(u"kind"_s), (QStringList{u"crash"_s, u"crash"_s}));
        QCOMPARE(f.sent(u"stack"_s), (QStringList{u"first Exception\nx"_s, u"nothing special"_s}));
        QCOMPARE(f.preferences.text(lastScanKey), newest.text());
        f.upload->sendSystemCrashReports();
        QCOMPARE(f.http.requests.size(), 2);
    }

    void withoutNewReportsTheDateStays()
    {
        Fixture f;
        f.upload->sendSystemCrashReports();
        QCOMPARE(f.preferences.text(lastScanKey), FileDate::distantPast().text());
        f.preferences.setValue(lastScanKey, u"2027-01-15T08:00:00.000000001Z"_s);
        f.upload->sendSystemCrashReports();
        QCOMPARE(f.preferences.text(lastScanKey), u"2027-01-15T08:00:00.000000001Z"_s);
    }

    void anInvalidDateCountsAsNever()
    {
        for (const QJsonValue &value : {QJsonValue(12), QJsonValue(u"soon"_s), QJsonValue(QJsonArray())}) {
            Fixture f;
            f.addReport("OrvaneBreak-1.crash", "Exception");
            f.preferences.setValue(lastScanKey, value);
            f.upload->sendSystemCrashReports();
            QCOMPARE(f.http.requests.size(), 1);
            QCOMPARE(f.preferences.text(lastScanKey), f.dateOf("OrvaneBreak-1.crash").text());
        }
    }

    void withoutAFolderTheDateStays()
    {
        Fixture f;
        std::filesystem::remove(f.places.systemReports);
        f.upload->sendSystemCrashReports();
        QVERIFY(f.preferences.value(lastScanKey).isUndefined());
    }

    void anErrorIsSentWithItsCalls()
    {
        Fixture f;
        const SharedInstance<CrashUpload> shared(*f.upload);
        const std::function<void(int)> deep = [&](int depth) {
            if (depth == 0)
                CrashReporter::reportError(u"unexpected"_s);
            else
                deep(depth - 1);
        };
        deep(40);
        QCOMPARE(f.sent(u"kind"_s), QStringList{u"error"_s});
        QCOMPARE(f.sent(u"message"_s), QStringList{u"unexpected"_s});
        const QStringList lines = f.sent(u"stack"_s).first().split(u'\n');
        QCOMPARE(lines.size(), 15);
        QVERIFY2(lines.first().startsWith("0 orvanebreak@"_L1) && lines.first().contains("reportError"_L1),
                 qPrintable(lines.first()));
        QVERIFY(!std::filesystem::exists(f.places.pendingReport));
    }

    void reportsAreInTheUsersFolders()
    {
        qputenv("XDG_DATA_HOME", "/data");
        qputenv("XDG_STATE_HOME", "/state");
        QCOMPARE(CrashUpload::Places::standard().pendingReport,
                 std::filesystem::path("/data/OrvaneBreak/pending-crash.txt"));
        QCOMPARE(CrashUpload::Places::standard().systemReports,
                 std::filesystem::path("/state/OrvaneBreak/Logs/DiagnosticReports"));
        qputenv("XDG_DATA_HOME", "relative");
        qunsetenv("XDG_STATE_HOME");
        qputenv("HOME", "/home/someone");
        QCOMPARE(CrashUpload::Places::standard().pendingReport,
                 std::filesystem::path("/home/someone/.local/share/OrvaneBreak/pending-crash.txt"));
        QCOMPARE(CrashUpload::Places::standard().systemReports,
                 std::filesystem::path("/home/someone/.local/state/OrvaneBreak/Logs/DiagnosticReports"));
    }
};

ORVANE_TEST(CrashUploadTest, QCoreApplication)
#include "CrashUploadTest.moc"
