// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateVersion.h"

#include "Support/TestProgram.h"

#include <QTest>

using namespace Qt::StringLiterals;

class UpdateVersionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void olderAndNewer_data()
    {
        QTest::addColumn<QString>("older");
        QTest::addColumn<QString>("newer");
        const auto row = [](const char *older, const char *newer) {
            QTest::addRow("%s < %s", older, newer)
                << QString::fromLatin1(older) << QString::fromLatin1(newer);
        };
        row("1", "2");
        row("1.9", "1.10");
        row("1.2", "1.2.1");
        row("1.2.3", "1.3");
        row("0", "0.0.1");
        row("4294967295", "4294967296");
        row("18446744073709551615", "18446744073709551616");
        row("1.99999999999999999999999999999", "1.100000000000000000000000000000");
        row("1.007", "1.8");
        row("1.2-beta.1", "1.2");
        row("1.2-beta.1", "1.2.0");
        row("1.1", "1.2-beta.1");
        row("1.2-alpha", "1.2-beta");
        row("1.2-beta", "1.2-beta.1");
        row("1.2-beta.2", "1.2-beta.11");
        row("1.2-7", "1.2-beta");
        row("1.2-beta-1", "1.2-beta-2");
        row("1.2-B", "1.2-a");
    }

    static void olderAndNewer()
    {
        QFETCH(const QString, older);
        QFETCH(const QString, newer);
        QVERIFY(UpdateVersion(older) < UpdateVersion(newer));
        QVERIFY(UpdateVersion(newer) > UpdateVersion(older));
        QVERIFY(!(UpdateVersion(older) == UpdateVersion(newer)));
    }

    static void same_data()
    {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::newRow("itself") << u"1.2.3"_s << u"1.2.3"_s;
        QTest::newRow("missing numbers") << u"1.2"_s << u"1.2.0"_s;
        QTest::newRow("many missing numbers") << u"1"_s << u"1.0.0.0"_s;
        QTest::newRow("leading zeros") << u"01.002"_s << u"1.2"_s;
        QTest::newRow("pre-release") << u"1.2-rc.1"_s << u"1.2.0-rc.01"_s;
    }

    static void same()
    {
        QFETCH(const QString, first);
        QFETCH(const QString, second);
        QVERIFY(UpdateVersion(first) == UpdateVersion(second));
        QVERIFY(!(UpdateVersion(first) > UpdateVersion(second)));
        QVERIFY(!(UpdateVersion(first) < UpdateVersion(second)));
        QCOMPARE(UpdateVersion(first).text(), first);
    }

    static void noVersion_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QString();
        QTest::newRow("word") << u"latest"_s;
        QTest::newRow("prefix") << u"v1.2"_s;
        QTest::newRow("minus") << u"-1"_s;
        QTest::newRow("dot at the end") << u"1."_s;
        QTest::newRow("dot at the beginning") << u".1"_s;
        QTest::newRow("two dots") << u"1..2"_s;
        QTest::newRow("parent folder") << u"../1"_s;
        QTest::newRow("slash") << u"1/2"_s;
        QTest::newRow("space") << u"1 2"_s;
        QTest::newRow("line end") << u"1.2\n"_s;
        QTest::newRow("zero byte") << u"1.2"_s + QChar(u'\0');
        QTest::newRow("arabic digits") << u"\u0661.\u0662"_s;
        QTest::newRow("empty pre-release") << u"1.2-"_s;
        QTest::newRow("empty identifier") << u"1.2-a..b"_s;
        QTest::newRow("build") << u"1.2+5"_s;
        QTest::newRow("letters after the number") << u"1.2b3"_s;
        QTest::newRow("too long") << QString(65, u'1');
    }

    static void noVersion()
    {
        QFETCH(const QString, text);
        const UpdateVersion none(text);
        const UpdateVersion zero(u"0"_s);
        QVERIFY(!none.isValid());
        QVERIFY(none.text().isEmpty());
        QVERIFY(!(none > zero) && !(none < zero) && !(none == zero) && !(none == none));
    }

    static void theLongestVersion()
    {
        QVERIFY(UpdateVersion(QString(64, u'1')).isValid());
        QVERIFY(!UpdateVersion().isValid());
    }
};

ORVANE_TEST(UpdateVersionTest, TestProgram::NoApplication)
#include "UpdateVersionTest.moc"
