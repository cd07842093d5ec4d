// SPDX-License-Identifier: GPL-3.0-or-later
#include "ReportFile.h"
#include "Support/ScratchFolder.h"
#include "Support/TestProgram.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include <chrono>
#include <csignal>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr int timeoutMilliseconds = 20'000;
constexpr int maxLines = 30;

/// The outcome of a crash.
struct Crash
{
    int signal = 0; ///< The signal that ended the process; 0 when none did.
    QByteArray text;
    QString message;
    QStringList stack;
    std::optional<std::chrono::nanoseconds> lifetime;

    [[nodiscard]] bool names(const char *function) const
    {
        return stack.join(u'\n').contains(QLatin1StringView(function));
    }
};

class CrashPlace
{
public:
    [[nodiscard]] std::filesystem::path report() const
    {
        return folder.path("data/OrvaneBreak/pending-crash.txt");
    }

    /// Runs the crashing program and reads its report.
    [[nodiscard]] Crash run(const QString &kind, const QString &shortage = {}) const
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"HOME"_s, u"/home/anna"_s);
        environment.insert(u"USER"_s, u"anna"_s);
        process.setProcessEnvironment(environment);
        QStringList arguments{QString::fromStdString(report().string()), kind};
        if (!shortage.isEmpty())
            arguments.append(shortage);
        process.start(QStringLiteral(ORVANE_CRASHER), arguments);
        if (!process.waitForFinished(timeoutMilliseconds))
            qFatal("the program does not end");
        Crash crash;
        // After a crash QProcess returns the number of the signal as the exit code.
        crash.signal = process.exitStatus() == QProcess::CrashExit ? process.exitCode() : 0;
        crash.lifetime = ReportFile::lifetime(report());
        crash.text = ScratchFolder::bytesOf(report());
        const QStringList pieces = QString::fromUtf8(crash.text).split(u"\n---\n"_s);
        crash.message = pieces.first();
        crash.stack = pieces.value(1).split(u'\n', Qt::SkipEmptyParts);
        return crash;
    }

    ScratchFolder folder;
};

} // namespace

class CrashCaptureTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void signalsAreReported_data()
    {
        QTest::addColumn<int>("signal");
        for (const int signal : {SIGABRT, SIGSEGV, SIGILL, SIGBUS, SIGFPE, SIGTRAP})
            QTest::addRow("%d", signal) << signal;
    }

    void signalsAreReported()
    {
        QFETCH(const int, signal);
        for (const char *where : {"signal %1", "thread signal %1"}) {
            const CrashPlace place;
            const Crash crash = place.run(QString::fromLatin1(where).arg(signal));
            QCOMPARE(crash.signal, signal);
            QCOMPARE(crash.message, u"Signal %1"_s.arg(signal));
            QVERIFY2(crash.names("crashRKNSt7"), crash.text.constData());
            QVERIFY(!crash.names("handleSignal"));
        }
    }

    void crashesAreReported_data()
    {
        QTest::addColumn<int>("signal");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("function"); // part of a name in the stack
        const QString segmentation = u"Signal 11"_s;
        const QString abort = u"Signal 6"_s;
        QTest::newRow("overflow") << SIGSEGV << segmentation << u"recurseForEver"_s;
        QTest::newRow("thread overflow") << SIGSEGV << segmentation << u"recurseForEver"_s;
        QTest::newRow("nowhere") << SIGSEGV << segmentation << u"orvanebreak"_s;
        QTest::newRow("data") << SIGSEGV << segmentation << u"callNowhere"_s;
        QTest::newRow("damaged stack") << SIGSEGV << segmentation << u"damageStack"_s;
        QTest::newRow("two threads") << SIGSEGV << segmentation << u"crashAtOnce"_s;
        QTest::newRow("bad free") << SIGABRT << abort << u"freeWhatIsNotAllocated"_s;
        QTest::newRow("corrupt heap") << SIGABRT << abort << u"corruptHeap"_s;
        QTest::newRow("throw exception")
            << SIGABRT << u"Exception: std::runtime_error : the disk is tired"_s << u"throwText"_s;
        QTest::newRow("throw string")
            << SIGABRT
            << u"Exception: std::__cxx11::basic_string<char, std::char_traits<char>, "
               "std::allocator<char> > : a text"_s
            << u"crash"_s;
        QTest::newRow("throw int") << SIGABRT << u"Exception: int : "_s << u"crash"_s;
        QTest::newRow("throw without reason")
            << SIGABRT << u"Exception: (anonymous namespace)::Silent : "_s << u"crash"_s;
        QTest::newRow("throw private")
            << SIGABRT << u"Exception: std::runtime_error : ~/notes --- of ~"_s << u"throwText"_s;
        QTest::newRow("throw Latin-1")
            << SIGABRT << u"Exception: std::runtime_error : no file caf\uFFFD"_s << u"throwText"_s;
        QTest::newRow("throw in thread")
            << SIGABRT << u"Exception: std::runtime_error : elsewhere"_s << QString();
        QTest::newRow("rethrow") << SIGABRT << u"Exception: std::runtime_error : twice"_s << u"rethrow"_s;
        QTest::newRow("terminate") << SIGABRT << u"Exception: terminate : "_s << u"crash"_s;
        QTest::newRow("after a child in the same memory") << SIGFPE << u"Signal 8"_s << u"crash"_s;
    }

    void crashesAreReported()
    {
        QFETCH(const int, signal);
        QFETCH(const QString, message);
        QFETCH(const QString, function);
        const CrashPlace place;
        const Crash crash = place.run(QString::fromUtf8(QTest::currentDataTag()));
        QCOMPARE(crash.signal, signal);
        QCOMPARE(crash.message, message);
        QVERIFY2(crash.stack.join(u'\n').contains(function), crash.text.constData());
        QVERIFY(crash.stack.size() <= maxLines);
        QVERIFY(!crash.text.endsWith('\n'));
        QVERIFY(crash.text.isValidUtf8());
    }

    void functionsOfLibrariesAreNamed()
    {
        const CrashPlace place;
        const Crash crash = place.run(u"bad free"_s);
        QVERIFY2(crash.names(" abort + "), crash.text.constData());
    }

    void aLongReasonIsCut()
    {
        const CrashPlace place;
        const Crash crash = place.run(u"throw much"_s);
        QCOMPARE(crash.message.size(), 64 * 1024);
        QVERIFY(crash.names("crashRKNSt7"));
    }

    void aCrashOfAChildIsNotReported()
    {
        for (const char *kind : {"child", "terminate in child"}) {
            const CrashPlace place;
            const Crash crash = place.run(QString::fromLatin1(kind));
            QCOMPARE(crash.signal, 0);
            QCOMPARE(crash.text, QByteArray());
        }
    }

    void theReportSaysHowLongTheProcessRan()
    {
        const CrashPlace place;
        QVERIFY(!ReportFile::lifetime(place.report()));
        const Crash crash = place.run(u"throw int"_s);
        QVERIFY(crash.lifetime && *crash.lifetime < std::chrono::seconds(5));
    }

    void theStackOfAnExceptionBeginsWhereItWasThrown()
    {
        const CrashPlace place;
        const QStringList stack = place.run(u"throw exception"_s).stack;
        QVERIFY2(stack.first().contains("throwText"_L1), qPrintable(stack.first()));
    }

    void aCallToNowhereNamesTheCallers()
    {
        for (const char *kind : {"nowhere", "data"}) {
            const CrashPlace place;
            const Crash crash = place.run(QString::fromLatin1(kind));
            QVERIFY2(crash.stack.size() > 3, crash.text.constData());
            QVERIFY2(crash.stack.at(1).contains("callNowhere"_L1), crash.text.constData());
            QVERIFY2(crash.names("crashRKNSt7") && crash.names(" main + "), crash.text.constData());
            QCOMPARE(crash.stack.first() == u"0 ? 0x0"_s, QLatin1StringView(kind) == "nowhere"_L1);
        }
    }

    void deepStacksAreTruncated()
    {
        const CrashPlace place;
        const QStringList stack = place.run(u"deep"_s).stack;
        QCOMPARE(stack.size(), maxLines);
        static const QRegularExpression form(
            uR"(^(\d+) (orvanebreak|\S+\.so\S*)@[0-9a-f]{8} 0x[0-9a-f]+( \S+ \+ \d+)?$)"_s);
        for (qsizetype index = 0; index < stack.size(); ++index) {
            const QRegularExpressionMatch line = form.match(stack.at(index));
            QVERIFY2(line.hasMatch(), qPrintable(stack.at(index)));
            QCOMPARE(line.captured(1).toLongLong(), index);
        }
    }

    void onlyTheOwnerCanReadIt()
    {
        const CrashPlace place;
        QVERIFY(!place.run(u"signal 11"_s).text.isEmpty());
        QCOMPARE(ScratchFolder::status(place.report()).st_mode & 07777U, 0600U);
        QCOMPARE(ScratchFolder::status(place.report().parent_path()).st_mode & 07777U, 0700U);
    }

    void aNewReportReplacesTheOldOne()
    {
        const CrashPlace place;
        QCOMPARE(place.run(u"signal 11"_s).message, u"Signal 11"_s);
        QCOMPARE(place.run(u"throw int"_s).message, u"Exception: int : "_s);
        QCOMPARE(place.run(u"signal 8"_s).message, u"Signal 8"_s);
    }

    void aFullDiskKeepsTheReportBefore()
    {
        const CrashPlace place;
        const QByteArray before = place.run(u"signal 11"_s).text;
        const Crash crash = place.run(u"signal 8"_s, u"full-disk"_s);
        QCOMPARE(crash.signal, SIGFPE);
        QCOMPARE(crash.text, before);
        QVERIFY(!std::filesystem::exists(place.report().string() + ".new"));
    }

    void withoutAnyDescriptorItIsReported()
    {
        const CrashPlace place;
        const Crash crash = place.run(u"signal 8"_s, u"no-descriptors"_s);
        QCOMPARE(crash.signal, SIGFPE);
        QCOMPARE(crash.message, u"Signal 8"_s);
    }

    void aFolderThatDisappearedIsCreatedAgain()
    {
        const CrashPlace place;
        QCOMPARE(place.run(u"signal 11"_s, u"no-folder"_s).message, u"Signal 11"_s);
        QCOMPARE(ScratchFolder::status(place.report().parent_path()).st_mode & 07777U, 0700U);
    }

    void withoutItsFolderOnlyTheReportIsLost()
    {
        const CrashPlace place;
        ScratchFolder::writeTo(place.folder.path("data"), "in the way");
        const Crash crash = place.run(u"signal 11"_s);
        QCOMPARE(crash.signal, SIGSEGV);
        QCOMPARE(crash.text, QByteArray());
        QCOMPARE(ScratchFolder::bytesOf(place.folder.path("data")), QByteArray("in the way"));
        QCOMPARE(place.folder.names(), QStringList{u"data"_s});
    }

    void aFolderInPlaceOfTheReportStays()
    {
        const CrashPlace place;
        std::filesystem::create_directories(place.report() / "occupied");
        QCOMPARE(place.run(u"signal 11"_s).signal, SIGSEGV);
        QVERIFY(std::filesystem::is_directory(place.report() / "occupied"));
    }

    void aLinkIsNotFollowed()
    {
        const CrashPlace place;
        std::filesystem::create_directories(place.report().parent_path());
        ScratchFolder::writeTo(place.folder.path("precious"), "precious");
        std::filesystem::create_symlink(place.folder.path("precious"), place.report().string() + ".new");
        QCOMPARE(place.run(u"signal 11"_s).message, u"Signal 11"_s);
        QCOMPARE(ScratchFolder::bytesOf(place.folder.path("precious")), QByteArray("precious"));
    }

    void aThousandCrashesEndAtOnceWithWholeReports()
    {
        const QStringList kinds{u"signal 11"_s, u"thread signal 6"_s, u"bad free"_s,    u"throw exception"_s,
                                u"overflow"_s,  u"corrupt heap"_s,    u"two threads"_s, u"nowhere"_s};
        const CrashPlace place;
        for (int count = 0; count < ORVANE_CRASHES; ++count) {
            const QString kind = kinds.at(count % kinds.size());
            std::error_code ignored;
            std::filesystem::remove(place.report(), ignored);
            QElapsedTimer time;
            time.start();
            const Crash crash = place.run(kind);
            QVERIFY2(time.elapsed() < 1000, qPrintable(kind));
            QVERIFY2(crash.signal != 0, qPrintable(kind));
            QVERIFY2(!crash.message.isEmpty() && !crash.stack.isEmpty(), crash.text.constData());
        }
    }
};

ORVANE_TEST(CrashCaptureTest, QCoreApplication)
#include "CrashCaptureTest.moc"
