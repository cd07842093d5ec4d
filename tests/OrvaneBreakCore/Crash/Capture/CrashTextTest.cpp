// SPDX-License-Identifier: GPL-3.0-or-later
#include "CrashText.h"

#include "BuildId.h"
#include "ExceptionText.h"
#include "ModuleSymbols.h"
#include "Support/TestProgram.h"

#include <QFile>
#include <QTest>

#include <array>
#include <string>

class CrashTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbersAreWritten()
    {
        CrashText text;
        text.append("a ").appendDecimal(0).append(" ").appendDecimal(18'446'744'073'709'551'615U);
        text.append(" ").appendHexadecimal(0).append(" ").appendHexadecimal(0xfedcba9876543210U);
        QCOMPARE(text.view(), std::string_view("a 0 18446744073709551615 0x0 0xfedcba9876543210"));
        text.clear();
        text.appendBytes(std::array<unsigned char, 3>{0, 10, 255});
        QCOMPARE(text.view(), std::string_view("000aff"));
        text.clear();
        QCOMPARE(text.view(), std::string_view());
    }

    void excessTextIsDropped()
    {
        CrashText text;
        const std::string line(1000, 'x');
        for (int count = 0; count < 100; ++count)
            text.append(line).appendDecimal(7);
        QVERIFY(text.view().size() < 100 * line.size());
        QCOMPARE(text.view().substr(0, line.size()), std::string_view(line));
    }

    void theUserIsNotNamed_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("home") << "cannot open [/home/ann/a.txt]"
                              << "cannot open [~/a.txt]";
        QTest::newRow("twice") << "/home/ann /home/ann"
                               << "~ ~";
        QTest::newRow("another home") << "/home/anne/x"
                                      << "/home/anne/x";
        QTest::newRow("name") << "user ann, (ann)"
                              << "user ~, (~)";
        QTest::newRow("part of a word") << "annual planning ann_x"
                                        << "annual planning ann_x";
        QTest::newRow("beside a letter with an accent") << "\u00e9ann ann"
                                                        << "\u00e9ann ~";
        QTest::newRow("nothing") << ""
                                 << "";
    }

    void theUserIsNotNamed()
    {
        QFETCH(const QString, text);
        QFETCH(const QString, expected);
        QCOMPARE(QString::fromStdString(withoutUser(text.toStdString(), "/home/ann", "ann")), expected);
    }

    void noUserLeavesTheTextAlone() { QCOMPARE(withoutUser("a /b", "/", ""), std::string("a /b")); }

    void textsAreValid()
    {
        QCOMPARE(validText("Zo\xc3\xab"), std::string("Zo\xc3\xab"));
        QCOMPARE(validText("Zo\xeb \xff"), std::string("Zo\xef\xbf\xbd \xef\xbf\xbd"));
        std::string accents = "x";
        while (accents.size() < 100'000)
            accents += "\xc3\xab";
        const QByteArray cut = QByteArray::fromStdString(validText(accents));
        QVERIFY(cut.isValidUtf8());
        QVERIFY(cut.size() > 65'000 && cut.size() < 66'000);
    }

    void anotherFileHasNoNames()
    {
        for (const char *file : {"/nonexistent", "/", "/dev/null", "/etc/passwd"}) {
            const ModuleSymbols symbols(file);
            QVERIFY(!symbols.find(0));
            QVERIFY(buildIdOf(symbols.image()).empty());
        }
    }

    void aDamagedModuleIsNotReadBeyondItsEnd()
    {
        QFile file(QStringLiteral("/proc/self/exe"));
        QVERIFY(file.open(QFile::ReadOnly));
        const QByteArray whole = file.read(4096);
        for (qsizetype size = 0; size < whole.size(); ++size) {
            const std::string bytes = whole.first(size).toStdString();
            QVERIFY(buildIdOf(bytes).size() <= 20);
        }
    }

    void addressesOutsideTheProgramHaveNoName()
    {
        const ModuleSymbols symbols(ModuleSymbols::program);
        QVERIFY(!symbols.find(0));
        QVERIFY(!symbols.find(~std::uint64_t{0}));
    }
};

ORVANE_TEST(CrashTextTest, QCoreApplication)
#include "CrashTextTest.moc"
