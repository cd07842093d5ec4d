// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/TestProgram.h"
#include "UnpackFixture.h"

#include <clocale>

using namespace Qt::StringLiterals;
using namespace UnpackFixture;

class HostileArchiveTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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

    static void aPathThatTheLocaleCannotEncode()
    {
        std::setlocale(LC_ALL, "C.UTF-8");
        const QByteArray archive = packed(updateWith({file(in("\u00e9"))}));
        std::setlocale(LC_ALL, "C");
        refuse(archive, UnpackProblem::Damaged);
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

    static void hardLinksAndDevices()
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
        // An implied folder may get its own entry later.
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

    static void limits()
    {
        UnpackLimits limits;
        // Nine entries, and the implied folders "lib", "share" and "share/OrvaneBreak".
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

    static void defaultLimits()
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

    static void aHugeFileIsRefusedByItsHeader()
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
};

ORVANE_TEST(HostileArchiveTest, TestProgram::NoApplication)
#include "HostileArchiveTest.moc"
