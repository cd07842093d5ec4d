// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonPreferences.h"
#include "Support/ScratchFolder.h"
#include "Support/TestProgram.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString key = u"key"_s;

/// The log says where the file goes.
void expectLogLine()
{
    static const QRegularExpression line(
        u"^OrvaneBreak: préférences: .* /.+/preferences\\.damaged-\\d{8}T\\d{6}Z\\.json$"_s);
    QTest::ignoreMessage(QtInfoMsg, line);
}

} // namespace

/// The file does not hold preferences.
class PreferencesDamageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }
    void aDamagedFileIsPutAside_data();
    void aDamagedFileIsPutAside();
    void nothingPutAsideIsOverwritten();
    void aNameInUseGetsANumber();
    void anEmptyFileIsOverwritten();
    void damageWhileRunningKeepsTheLastGoodValues();
    void damageBehindALinkIsPutAsideThere();
};

void PreferencesDamageTest::aDamagedFileIsPutAside_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("text") << "hello"_ba;
    QTest::newRow("truncated") << R"({"key": 1, "other": "te)"_ba;
    QTest::newRow("garbage after it") << R"({"key": 1}})"_ba;
    QTest::newRow("array") << R"([{"key": 1}])"_ba;
    QTest::newRow("number") << "1"_ba;
    QTest::newRow("null") << "null"_ba;
    QTest::newRow("blank") << " \n"_ba;
    QTest::newRow("NUL bytes") << QByteArray(4096, '\0');
    QTest::newRow("binary") << "\x7f\x45LF\x02\x01\xff\xfe{}"_ba;
    QTest::newRow("UTF-16") << QByteArray("{\0\"\0k\0\"\0:\0001\0}\0", 14);
    QTest::newRow("comment") << "// mine\n{\"key\": 1}"_ba;
    QTest::newRow("NUL after it") << QByteArray("{\"key\": 1}\0", 11);
    QTest::newRow("not UTF-8") << "{\"key\": \"\xff\"}"_ba;
    QTest::newRow("too large") << R"({"key": 1})" + QByteArray(67'108'864, ' ');
}

void PreferencesDamageTest::aDamagedFileIsPutAside()
{
    QFETCH(const QByteArray, content);
    const ScratchFolder folder;
    folder.write(content);
    expectLogLine();
    JsonPreferences preferences(folder.file());
    QVERIFY(preferences.value(key).isUndefined());
    QCOMPARE(folder.names(), folder.asideNames());
    QCOMPARE(folder.asideNames().size(), 1);
    QVERIFY(QRegularExpression(u"^preferences\\.damaged-\\d{8}T\\d{6}Z\\.json$"_s)
                .match(folder.names().at(0))
                .hasMatch());
    QCOMPARE(folder.aside(folder.names().at(0)), content);
    preferences.setValue(key, 2);
    QCOMPARE(JsonPreferences(folder.file()).integer(key), 2);
    QCOMPARE(folder.asideNames().size(), 1);
}

void PreferencesDamageTest::nothingPutAsideIsOverwritten()
{
    const ScratchFolder folder;
    QSet<QByteArray> expected;
    for (int number = 0; number < 20; ++number) {
        const QByteArray content = "damage " + QByteArray::number(number);
        expected.insert(content);
        folder.write(content);
        const JsonPreferences preferences(folder.file());
    }
    QSet<QByteArray> found;
    for (const QString &name : folder.asideNames())
        found.insert(folder.aside(name));
    QCOMPARE(found, expected);
}

void PreferencesDamageTest::aNameInUseGetsANumber()
{
    const ScratchFolder folder;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    // Files take every name of the next five minutes, and folders the first numbered one.
    for (int second = 0; second < 300; ++second) {
        const QString date = now.addSecs(second).toString(u"yyyyMMdd'T'HHmmss'Z'"_s);
        ScratchFolder::writeTo(folder.path("preferences.damaged-" + date.toStdString() + ".json"), "old");
        std::filesystem::create_directory(
            folder.path("preferences.damaged-" + date.toStdString() + "-2.json"));
    }
    folder.write("new");
    const JsonPreferences preferences(folder.file());
    QStringList numbered = folder.asideNames().filter(u"Z-3.json"_s);
    QCOMPARE(numbered.size(), 1);
    QCOMPARE(folder.aside(numbered.takeFirst()), "new"_ba);
    for (const QString &name : folder.asideNames().filter(u"Z.json"_s))
        QCOMPARE(folder.aside(name), "old"_ba);
}

void PreferencesDamageTest::anEmptyFileIsOverwritten()
{
    const ScratchFolder folder;
    folder.write("");
    JsonPreferences preferences(folder.file());
    QVERIFY(preferences.value(key).isUndefined());
    preferences.setValue(key, 1);
    QCOMPARE(folder.bytes(), "{\n    \"key\": 1\n}\n"_ba);
    QCOMPARE(folder.names(), QStringList{u"preferences.json"_s});
}

void PreferencesDamageTest::damageWhileRunningKeepsTheLastGoodValues()
{
    const ScratchFolder folder;
    folder.write(R"({"key": 1, "other": 2})");
    JsonPreferences preferences(folder.file());
    folder.write(R"({"key": 5, )");
    QCOMPARE(preferences.integer(key), 1);
    QCOMPARE(folder.names(), QStringList{u"preferences.json"_s});
    expectLogLine();
    preferences.setValue(key, 3);
    QCOMPARE(folder.bytes(), "{\n    \"key\": 3,\n    \"other\": 2\n}\n"_ba);
    QCOMPARE(folder.asideNames().size(), 1);
    QCOMPARE(folder.aside(folder.asideNames().at(0)), R"({"key": 5, )"_ba);
    QCOMPARE(folder.names().size(), 2);
}

void PreferencesDamageTest::damageBehindALinkIsPutAsideThere()
{
    const ScratchFolder folder;
    std::filesystem::create_directory(folder.path("dotfiles"));
    const std::filesystem::path target = folder.path("dotfiles") / "mine.json";
    ScratchFolder::writeTo(target, "damage");
    std::filesystem::create_symlink(target, folder.file());
    JsonPreferences preferences(folder.file());
    preferences.setValue(key, 1);
    QVERIFY(std::filesystem::is_symlink(folder.file()));
    QCOMPARE(ScratchFolder::bytesOf(target), "{\n    \"key\": 1\n}\n"_ba);
    const QDir dotfiles(QString::fromStdString(folder.path("dotfiles").string()));
    const QStringList aside = dotfiles.entryList({u"mine.damaged-*Z.json"_s});
    QCOMPARE(aside.size(), 1);
    QCOMPARE(ScratchFolder::bytesOf(dotfiles.filePath(aside.at(0)).toStdString()), "damage"_ba);
}

ORVANE_TEST(PreferencesDamageTest, QCoreApplication)
#include "PreferencesDamageTest.moc"
