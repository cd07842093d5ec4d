// SPDX-License-Identifier: GPL-3.0-or-later
#include "Bundle.h"

#include "Support/TestProgram.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class BundleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("version");
        QTest::newRow("text") << QByteArray(R"({"CFBundleShortVersionString": "1.2"})") << u"1.2"_s;
        QTest::newRow("number") << QByteArray(R"({"CFBundleShortVersionString": 1.2})") << u"absent"_s;
        QTest::newRow("no key") << QByteArray("{}") << u"absent"_s;
        QTest::newRow("no object") << QByteArray("[1]") << u"absent"_s;
        QTest::newRow("damaged") << QByteArray("{\"CFBundle") << u"absent"_s;
    }

    void texts()
    {
        QFETCH(const QByteArray, content);
        QFETCH(const QString, version);
        const QTemporaryDir folder;
        QFile file(folder.filePath(u"Info.json"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        QCOMPARE(Bundle(folder.path()).infoText(u"CFBundleShortVersionString"_s).value_or(u"absent"_s),
                 version);
    }

    void missingFile() { QVERIFY(!Bundle(u"/nonexistent"_s).infoText(u"CFBundleShortVersionString"_s)); }

    void theBuildTreeHasABundle()
    {
        const Bundle bundle = Bundle::main();
        QVERIFY(bundle.infoText(u"CFBundleShortVersionString"_s).value_or(QString()).contains(u'.'));
        QVERIFY(bundle.infoText(u"SUFeedURL"_s).has_value());
        QVERIFY(bundle.infoText(u"SUPublicEDKey"_s).has_value());
        QVERIFY(QFile::exists(bundle.soundsFolder() + u"/Glass.wav"_s));
    }
};

ORVANE_TEST(BundleTest, QCoreApplication)
#include "BundleTest.moc"
