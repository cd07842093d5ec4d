// SPDX-License-Identifier: GPL-3.0-or-later
#include "Updates/UnpackedUpdate.h"

#include "Platform/Preferences/ScratchFolder.h"
#include "Updates/ArchiveMaker.h"

#include <QTest>

#include <sys/resource.h>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace ArchiveMaker;

namespace {

constexpr auto top = "OrvaneBreak-1.3";

/// A folder to unpack in, beside a file that must stay as it is.
struct Place
{
    ScratchFolder scratch;
    std::filesystem::path folder = scratch.path("unpacked");

    Place() { scratch.writeTo(scratch.path("neighbour"), "untouched"); }

    [[nodiscard]] bool isUntouched() const
    {
        return scratch.names() == QStringList{u"neighbour"_s} &&
               ScratchFolder::bytesOf(scratch.path("neighbour")) == "untouched";
    }

    [[nodiscard]] unsigned mode(const std::string &path) const
    {
        return ScratchFolder::status(folder / top / path).st_mode & 07777U;
    }
};

std::vector<Entry> updateWith(const std::vector<Entry> &more)
{
    std::vector<Entry> entries = update("1.3");
    entries.insert(entries.end(), more.begin(), more.end());
    return entries;
}

std::string in(const std::string &path)
{
    return std::string(top) + '/' + path;
}

void refuse(const QByteArray &archive, UnpackProblem expected, const UnpackLimits &limits = {})
{
    const Place place;
    const auto result = unpackArchive(archive, place.folder, limits);
    const auto *failure = std::get_if<UnpackFailure>(&result);
    QVERIFY(failure);
    QCOMPARE(static_cast<int>(failure->problem), static_cast<int>(expected));
    QVERIFY(place.isUntouched());
}

void accept(const QByteArray &archive, const UnpackLimits &limits = {})
{
    const Place place;
    const auto result = unpackArchive(archive, place.folder, limits);
    const auto *failure = std::get_if<UnpackFailure>(&result);
    QVERIFY2(!failure, qPrintable(failure ? failure->detail : QString()));
}

} // namespace

class UnpackedUpdateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void aWholeUpdate()
    {
        const Place place;
        const auto result = unpackArchive(packedUpdate("1.3"), place.folder);
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
        const auto result = unpackArchive(
            packed(updateWith({file(in("a"), "a", 0777), file(in("b"), "b", 0606), file(in("c"), "c", 0400),
                               file(in("d"), "d", 0010), folder(in("e"), 0777)})),
            place.folder);
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
        const auto result = unpackArchive(
            packed(updateWith({file(in("empty"), ""), file(in("large"), large)})), place.folder);
        QVERIFY(std::holds_alternative<UnpackedUpdate>(result));
        QCOMPARE(ScratchFolder::bytesOf(place.folder / top / "empty"), QByteArray());
        QVERIFY(std::filesystem::exists(place.folder / top / "empty"));
        QCOMPARE(ScratchFolder::bytesOf(place.folder / top / "large"), large);
    }

    static void aFolderThatIsThereStays()
    {
        const Place place;
        std::filesystem::create_directory(place.folder);
        ScratchFolder::writeTo(place.folder / "mine", "mine");
        const auto result = unpackArchive(packedUpdate("1.3"), place.folder);
        QCOMPARE(std::get<UnpackFailure>(result).problem, UnpackProblem::Disk);
        QCOMPARE(ScratchFolder::bytesOf(place.folder / "mine"), "mine");
        QVERIFY(!std::filesystem::exists(place.folder / top));
    }

    static void hostilePaths_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("absolute") << u"/tmp/OrvaneBreak-1.3/x"_s;
        QTest::newRow("parent") << u"OrvaneBreak-1.3/../x"_s;
        QTest::newRow("parent at the end") << u"OrvaneBreak-1.3/lib/.."_s;
        QTest::newRow("parent at the beginning") << u"../OrvaneBreak-1.3/x"_s;
        QTest::newRow("dot") << u"OrvaneBreak-1.3/./x"_s;
        QTest::newRow("two slashes") << u"OrvaneBreak-1.3//x"_s;
        QTest::newRow("line end") << u"OrvaneBreak-1.3/a\nb"_s;
        QTest::newRow("escape") << u"OrvaneBreak-1.3/\x1b[2J"_s;
        QTest::newRow("not ASCII") << u"OrvaneBreak-1.3/\u00e9"_s;
        QTest::newRow("too long") << u"OrvaneBreak-1.3/"_s + u"abc/"_s.repeated(124) + u"x"_s;
        QTest::newRow("below a file") << u"OrvaneBreak-1.3/install/x"_s;
        QTest::newRow("through a link") << u"OrvaneBreak-1.3/lib/libQt6Core.so.6/x"_s;
    }

    static void hostilePaths()
    {
        QFETCH(const QString, path);
        refuse(packed(updateWith({file(path.toStdString())}), {archive_write_add_filter_zstd},
                      archive_write_set_format_gnutar),
               UnpackProblem::Path);
    }

    static void theLongestPath()
    {
        accept(packed(updateWith({file(in(std::string(496, 'x').replace(250, 1, "/")))})));
        refuse(packed(updateWith({file(in(std::string(497, 'x').replace(250, 1, "/")))})),
               UnpackProblem::Path);
    }

    static void links_data()
    {
        QTest::addColumn<QString>("place");
        QTest::addColumn<QString>("target");
        QTest::addColumn<bool>("isFine");
        QTest::newRow("beside") << u"a/link"_s << u"file"_s << true;
        QTest::newRow("below") << u"a/link"_s << u"b/file"_s << true;
        QTest::newRow("the top folder") << u"a/link"_s << u".."_s << true;
        QTest::newRow("upwards and down") << u"a/b/link"_s << u"../../lib/file"_s << true;
        QTest::newRow("absolute") << u"a/link"_s << u"/etc/passwd"_s << false;
        QTest::newRow("outside") << u"link"_s << u"../other"_s << false;
        QTest::newRow("outside by its own folder") << u"link"_s << u".."_s << false;
        QTest::newRow("outside from below") << u"a/link"_s << u"../../other"_s << false;
        QTest::newRow("outside and in again") << u"a/link"_s << u"../../OrvaneBreak-1.3/lib"_s << false;
        QTest::newRow("upwards after a name") << u"a/b/link"_s << u"other/../.."_s << false;
        QTest::newRow("empty step") << u"a/link"_s << u"b//c"_s << false;
        QTest::newRow("line end") << u"a/link"_s << u"b\nc"_s << false;
        QTest::newRow("too long") << u"a/link"_s << QString(513, u'x') << false;
    }

    static void links()
    {
        QFETCH(const QString, place);
        QFETCH(const QString, target);
        QFETCH(const bool, isFine);
        const QByteArray archive =
            packed(updateWith({symbolic(in(place.toStdString()), target.toStdString())}));
        if (isFine)
            accept(archive);
        else
            refuse(archive, UnpackProblem::Link);
    }

    static void aLinkIsNeverWrittenThrough()
    {
        refuse(packed(updateWith({symbolic(in("inside"), "lib"), file(in("inside/x"))})),
               UnpackProblem::Path);
        refuse(packed(updateWith({symbolic(in("inside"), "lib"), folder(in("inside/"))})),
               UnpackProblem::Duplicate);
        refuse(packed(updateWith({symbolic(in("a"), "install"), file(in("a"))})), UnpackProblem::Duplicate);
        refuse(packed(updateWith({symbolic(in("lib"), "bin")})), UnpackProblem::Duplicate);
    }

    static void whatIsNoFile()
    {
        refuse(packed(updateWith({hardLink(in("x"), in("install"))})), UnpackProblem::Link);
        refuse(packed(updateWith({hardLink(in("x"), "/etc/passwd")})), UnpackProblem::Link);
        refuse(packed(updateWith({special(in("x"), AE_IFCHR)})), UnpackProblem::Kind);
        refuse(packed(updateWith({special(in("x"), AE_IFBLK)})), UnpackProblem::Kind);
        refuse(packed(updateWith({special(in("x"), AE_IFIFO)})), UnpackProblem::Kind);
    }

    static void specialModes()
    {
        refuse(packed(updateWith({file(in("x"), "x", 04755)})), UnpackProblem::Mode);
        refuse(packed(updateWith({file(in("x"), "x", 02755)})), UnpackProblem::Mode);
        refuse(packed(updateWith({folder(in("x"), 01777)})), UnpackProblem::Mode);
    }

    static void duplicates()
    {
        refuse(packed(updateWith({file(in("install"))})), UnpackProblem::Duplicate);
        refuse(packed(updateWith({folder(in("bin/"))})), UnpackProblem::Duplicate);
        refuse(packed(updateWith({folder(in("install"))})), UnpackProblem::Duplicate);
        refuse(packed(updateWith({file(in("lib"))})), UnpackProblem::Duplicate);
        // A folder that was only part of a path so far may still come.
        accept(packed(updateWith({folder(in("lib/"))})));
    }

    static void topFolders()
    {
        refuse(packed(updateWith({file("OrvaneBreak-1.4/x")})), UnpackProblem::TopFolder);
        refuse(packed(updateWith({file("x")})), UnpackProblem::TopFolder);
        refuse(packed({file("OrvaneBreak-1.3")}), UnpackProblem::TopFolder);
        refuse(packed({symbolic("OrvaneBreak-1.3", "x")}), UnpackProblem::TopFolder);
        refuse(packed({folder("OrvaneBreak-latest/")}), UnpackProblem::TopFolder);
        refuse(packed({folder("OrvaneBreak-/")}), UnpackProblem::TopFolder);
        refuse(packed({folder("OrvaneBreak1.3/")}), UnpackProblem::TopFolder);
        refuse(packed({folder("./OrvaneBreak-1.3/")}), UnpackProblem::Path);
    }

    static void theVersionInside_data()
    {
        QTest::addColumn<QByteArray>("information");
        QTest::newRow("other version") << information("1.2");
        QTest::newRow("same, written in another way") << information("1.3.0");
        QTest::newRow("no version") << QByteArray("{}");
        QTest::newRow("number") << QByteArray(R"({"CFBundleShortVersionString": 1.3})");
        QTest::newRow("damaged") << QByteArray(R"({"CFBundleShortVersionString": "1.3")");
        QTest::newRow("too large") << QByteArray(100'000, ' ') + information("1.3");
    }

    static void theVersionInside()
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

    static void limits()
    {
        UnpackLimits limits;
        // Nine entries, and two folders that are only part of a path: "lib" and both of "share/OrvaneBreak".
        limits.entries = 12;
        accept(packedUpdate("1.3"), limits);
        refuse(packed(updateWith({file(in("one-more"))})), UnpackProblem::TooMany, limits);
        limits.entries = 11;
        refuse(packedUpdate("1.3"), UnpackProblem::TooMany, limits);

        limits = {};
        limits.entryBytes = 1'000;
        accept(packed(updateWith({file(in("x"), QByteArray(1'000, '\0'))})), limits);
        refuse(packed(updateWith({file(in("x"), QByteArray(1'001, '\0'))})), UnpackProblem::TooLarge, limits);

        limits = {};
        limits.totalBytes = 3'000'000;
        const QByteArray zeros(1'000'000, '\0');
        const auto two = updateWith({file(in("x"), zeros), file(in("y"), zeros)});
        accept(packed(two), limits);
        auto three = two;
        three.push_back(file(in("z"), zeros));
        refuse(packed(three), UnpackProblem::TooLarge, limits);
    }

    static void usualLimits()
    {
        const auto entry = [](const std::string &name, qint64 size) {
            return ArchiveEntry{ArchiveEntry::Kind::File, in(name), {}, size, false};
        };
        constexpr qint64 mebibyte = 1'048'576;
        ArchiveRules large({});
        QCOMPARE(large.admit(entry("a", 250 * mebibyte + 1)), UnpackProblem::TooLarge);
        QCOMPARE(large.admit(entry("b", -1)), UnpackProblem::TooLarge);
        QVERIFY(!large.admit(entry("c", 250 * mebibyte)) && !large.admit(entry("d", 250 * mebibyte)));
        QCOMPARE(large.admit(entry("e", 1)), UnpackProblem::TooLarge);
        ArchiveRules many({});
        for (int number = 1; number < 5'000; ++number)
            QVERIFY(!many.admit(entry(std::to_string(number), 1)));
        QCOMPARE(many.admit(entry("one-more", 1)), UnpackProblem::TooMany);
    }

    static void aSparseGiantIsRefusedByItsHeader()
    {
        QByteArray tar = packed(updateWith({file(in("giant"), "x")}), {}, archive_write_set_format_ustar);
        // The header of the last file, whose size is written as 11 octal digits.
        const qsizetype header = tar.lastIndexOf("OrvaneBreak-1.3/giant");
        constexpr qsizetype sizeField = 124;
        tar.replace(header + sizeField, 11, "77777777777");
        constexpr qsizetype sumField = 148;
        constexpr qsizetype blockSize = 512;
        tar.replace(header + sumField, 8, QByteArray(8, ' '));
        unsigned sum = 0;
        for (const char byte : tar.sliced(header, blockSize))
            sum += static_cast<unsigned char>(byte);
        tar.replace(header + sumField, 7, QByteArray::number(sum, 8).rightJustified(6, '0') + '\0');
        refuse(compressed(tar), UnpackProblem::TooLarge);
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
            const auto result = unpackArchive(archive, place.folder);
            const auto *failure = std::get_if<UnpackFailure>(&result);
            return failure && failure->problem == UnpackProblem::Disk && !failure->detail.isEmpty() ? 0 : 1;
        });
        QCOMPARE(status, 0);
        QVERIFY(place.isUntouched());
    }
};

QTEST_APPLESS_MAIN(UnpackedUpdateTest)
#include "UnpackedUpdateTest.moc"
