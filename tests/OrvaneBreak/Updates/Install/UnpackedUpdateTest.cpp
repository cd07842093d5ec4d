// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/TestProgram.h"
#include "UnpackFixture.h"

#include <sys/resource.h>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace UnpackFixture;

class UnpackedUpdateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void aCompleteUpdate()
    {
        const Place place;
        const auto result = unpackArchive(LibarchiveReader(packedUpdate("1.3")), place.folder);
        const auto &unpacked = std::get<UnpackedUpdate>(result);
        QCOMPARE(unpacked.version.text(), u"1.3"_s);
        QCOMPARE(unpacked.folder, place.folder / top);
        QCOMPARE(ScratchFolder::bytesOf(unpacked.folder / "bin/orvanebreak-program"), "program 1.3");
        QCOMPARE(ScratchFolder::bytesOf(unpacked.folder / "lib/libQt6Core.so.6"), "library 1.3");
        QCOMPARE(std::filesystem::read_symlink(unpacked.folder / "lib/libQt6Core.so.6"), "libQt6Core.so.6.4");
    }

    static void modesAreReduced()
    {
        const Place place;
        umask(077);
        const QByteArray archive =
            packed(updateWith({file(in("a"), "a", 0777), file(in("b"), "b", 0606), file(in("c"), "c", 0400),
                               file(in("d"), "d", 0010), folder(in("e"), 0777)}));
        const auto result = unpackArchive(LibarchiveReader(archive), place.folder);
        umask(022);
        QVERIFY(std::holds_alternative<UnpackedUpdate>(result));
        QCOMPARE(place.mode("a"), 0755U);
        QCOMPARE(place.mode("b"), 0644U);
        QCOMPARE(place.mode("c"), 0644U);
        QCOMPARE(place.mode("d"), 0755U);
        QCOMPARE(place.mode("e"), 0755U);
        QCOMPARE(place.mode("lib"), 0755U);
        QCOMPARE(place.mode("."), 0755U);
        QCOMPARE(ScratchFolder::status(place.folder).st_mode & 07777U, 0700U);
    }

    static void emptyAndLargeFiles()
    {
        const Place place;
        const QByteArray large = QByteArray("0123456789").repeated(100'000);
        const QByteArray archive = packed(updateWith({file(in("empty"), ""), file(in("large"), large)}));
        const auto result = unpackArchive(LibarchiveReader(archive), place.folder);
        QVERIFY(std::holds_alternative<UnpackedUpdate>(result));
        QCOMPARE(ScratchFolder::bytesOf(place.folder / top / "empty"), QByteArray());
        QVERIFY(std::filesystem::exists(place.folder / top / "empty"));
        QCOMPARE(ScratchFolder::bytesOf(place.folder / top / "large"), large);
    }

    static void anExistingFolderIsKept()
    {
        const Place place;
        std::filesystem::create_directory(place.folder);
        ScratchFolder::writeTo(place.folder / "mine", "mine");
        const auto result = unpackArchive(LibarchiveReader(packedUpdate("1.3")), place.folder);
        QCOMPARE(std::get<UnpackFailure>(result).problem, UnpackProblem::Disk);
        QCOMPARE(ScratchFolder::bytesOf(place.folder / "mine"), "mine");
        QVERIFY(!std::filesystem::exists(place.folder / top));
    }

    static void theVersionInInfoJson_data()
    {
        QTest::addColumn<QByteArray>("information");
        QTest::newRow("other version") << information("1.2");
        QTest::newRow("same, written in another way") << information("1.3.0");
        QTest::newRow("no version") << QByteArray("{}");
        QTest::newRow("number") << QByteArray(R"({"CFBundleShortVersionString": 1.3})");
        QTest::newRow("damaged") << QByteArray(R"({"CFBundleShortVersionString": "1.3")");
        QTest::newRow("too large") << QByteArray(100'000, ' ') + information("1.3");
    }

    static void theVersionInInfoJson()
    {
        QFETCH(const QByteArray, information);
        refuse(packed({file(in("bin/orvanebreak")), file(in("share/OrvaneBreak/Info.json"), information)}),
               UnpackProblem::Version);
    }

    static void withoutInformation()
    {
        refuse(packed({}), UnpackProblem::Version);
        refuse(packed({file(in("bin/orvanebreak"))}), UnpackProblem::Version);
        refuse(packed({file(in("x"), information("1.3")),
                       symbolic(in("share/OrvaneBreak/Info.json"), "../../x")}),
               UnpackProblem::Version);
    }

    static void damaged()
    {
        const QByteArray archive = packedUpdate("1.3");
        refuse({}, UnpackProblem::Damaged);
        refuse("Not found", UnpackProblem::Damaged);
        for (qsizetype length = 1; length < archive.size(); length += 7)
            refuse(archive.first(length), UnpackProblem::Damaged);
        refuse(compressed("no archive"), UnpackProblem::Damaged);
        refuse(compressed(packed(update("1.3"), {}).first(1'300)), UnpackProblem::Damaged);
    }

    static void anotherFormat()
    {
        refuse(packed(update("1.3"), {}), UnpackProblem::Damaged);
        refuse(packed(update("1.3"), {archive_write_add_filter_gzip}), UnpackProblem::Damaged);
        refuse(packed(update("1.3"), {archive_write_add_filter_zstd, archive_write_add_filter_zstd}),
               UnpackProblem::Damaged);
        refuse(packed(update("1.3"), {archive_write_add_filter_zstd}, archive_write_set_format_cpio_newc),
               UnpackProblem::Damaged);
    }

    static void aFullDisk()
    {
        const Place place;
        const QByteArray archive = packed(updateWith({file(in("large"), QByteArray(100'000, 'x'))}));
        const int status = runInChild([&] {
            signal(SIGXFSZ, SIG_IGN);
            const rlimit limit = {50'000, 50'000};
            setrlimit(RLIMIT_FSIZE, &limit);
            const auto result = unpackArchive(LibarchiveReader(archive), place.folder);
            const auto *failure = std::get_if<UnpackFailure>(&result);
            return failure && failure->problem == UnpackProblem::Disk && !failure->detail.isEmpty() ? 0 : 1;
        });
        QCOMPARE(status, 0);
        QVERIFY(place.isUntouched());
    }
};

ORVANE_TEST(UnpackedUpdateTest, TestProgram::NoApplication)
#include "UnpackedUpdateTest.moc"
