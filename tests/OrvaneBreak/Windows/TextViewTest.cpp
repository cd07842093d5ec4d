// SPDX-License-Identifier: GPL-3.0-or-later
#include "TextView.h"

#include "Support/TestProgram.h"

#include <QApplication>
#include <QScrollArea>
#include <QTest>

#include <algorithm>
#include <climits>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

constexpr int width = 416;
constexpr auto zeroWidthSpace = QChar(0x200B);

QString shown(const QString &text)
{
    return TextView(text, width, labelColor())
        .document()
        ->toRawText()
        .replace(QChar::ParagraphSeparator, u'\n');
}

} // namespace

/// Received texts of any length.
class TextViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TextView(u"a"_s, width, labelColor()).show(); }

    static void aTextOfUsualLengthIsShownAsItIs_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("short") << u"Bonjour\u00a0!\n\nÀ bientôt"_s;
        QTest::newRow("empty") << QString();
        QTest::newRow("many words") << u"une durée "_s.repeated(2'000);
        QTest::newRow("without spaces") << QString(20'000, QChar(0x4E2D));
        QTest::newRow("long link") << u"https://example.org/"_s + QString(350, u'x');
    }

    static void aTextOfUsualLengthIsShownAsItIs()
    {
        QFETCH(const QString, text);
        QCOMPARE(shown(text), text);
    }

    static void aLongWordCanBeBrokenBetweenCharacters()
    {
        const QString text = u"avant "_s + u"\U0001f600"_s.repeated(250) + u"e\u0301"_s.repeated(2'000);
        const QString result = shown(text);
        QCOMPARE(QString(result).remove(zeroWidthSpace), text);
        QVERIFY(result.count(zeroWidthSpace) >= 9);
        for (qsizetype at = result.indexOf(zeroWidthSpace); at >= 0;
             at = result.indexOf(zeroWidthSpace, at + 1))
            QVERIFY(!result.at(at + 1).isLowSurrogate() && !result.at(at + 1).isMark());
    }

    static void onlyTheBeginningOfAVeryLongTextIsShown()
    {
        const QString end = u"\n[…] Ce texte est trop long pour être affiché en entier."_s;
        QCOMPARE(shown(u"a "_s.repeated(10'001)), u"a "_s.repeated(10'000) + end);
        const QString emoji = shown(u"a"_s + u"\U0001f600"_s.repeated(10'000));
        QVERIFY(emoji.endsWith(end));
        QVERIFY(emoji.isValidUtf16());
    }

    static void aVeryLongWordIsLaidOutInTime()
    {
        long fastest = LONG_MAX;
        for (int attempt = 0; attempt < 3; ++attempt) {
            // The processor's time, because other programs may take the rest.
            const std::clock_t start = std::clock();
            QScrollArea area;
            area.setWidget(new TextView(QString(1'100'000, u'x'), width, labelColor()));
            area.resize(width, width);
            area.show();
            QCoreApplication::processEvents();
            fastest = std::min(fastest, (std::clock() - start) * 1'000 / CLOCKS_PER_SEC);
        }
        QVERIFY2(fastest < 100, QByteArray::number(qint64(fastest)).constData());
    }
};

ORVANE_TEST(TextViewTest, QApplication)
#include "TextViewTest.moc"
