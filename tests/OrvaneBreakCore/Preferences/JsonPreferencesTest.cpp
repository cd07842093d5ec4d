// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonPreferences.h"

#include "Support/ScratchFolder.h"
#include "Support/TestProgram.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>
#include <QTimeZone>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr mode_t permissionBits = 07777;

QString surrogate()
{
    return QString(QChar(0xD800));
}

} // namespace

class JsonPreferencesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }
    void everyTypeSurvivesARestart_data();
    void everyTypeSurvivesARestart();
    void integersAreExact_data();
    void integersAreExact();
    void datesSurviveARestart();
    void theFileIsReadable();
    void unknownMembersStay();
    void undefinedRemovesTheKey();
    void anEqualValueIsNotWritten();
    void largeIntegersAreComparedExactly();
    void fileAndNewFoldersArePrivate();
    void foldersThatExistKeepTheirMode();
    void theFileIsFoundThroughTheEnvironment_data();
    void theFileIsFoundThroughTheEnvironment();
    void valuesOfAnotherTypeAreAbsent_data();
    void valuesOfAnotherTypeAreAbsent();
    void unusualContentIsPreserved_data();
    void unusualContentIsPreserved();
    void unusualTextIsWritten();
};

void JsonPreferencesTest::everyTypeSurvivesARestart_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("null") << QJsonValue(QJsonValue::Null);
    QTest::newRow("true") << QJsonValue(true);
    QTest::newRow("false") << QJsonValue(false);
    QTest::newRow("integer") << QJsonValue(30);
    QTest::newRow("fraction") << QJsonValue(0.1);
    QTest::newRow("text") << QJsonValue(u"Regardez au loin à 6 m \"là-bas\"\n😀"_s);
    QTest::newRow("empty text") << QJsonValue(u""_s);
    QTest::newRow("array") << QJsonValue(QJsonArray{1, true, u"a"_s, QJsonArray{}});
    QTest::newRow("object") << QJsonValue(
        QJsonObject{{u"inner"_s, QJsonObject{{u"list"_s, QJsonArray{1.5}}}}});
}

void JsonPreferencesTest::everyTypeSurvivesARestart()
{
    QFETCH(const QJsonValue, value);
    const ScratchFolder folder;
    {
        JsonPreferences preferences(folder.file());
        QVERIFY(preferences.value(u"key"_s).isUndefined());
        preferences.setValue(u"key"_s, value);
        QCOMPARE(preferences.value(u"key"_s), value);
    }
    QCOMPARE(JsonPreferences(folder.file()).value(u"key"_s), value);
}

void JsonPreferencesTest::integersAreExact_data()
{
    QTest::addColumn<qint64>("integer");
    QTest::newRow("0") << qint64(0);
    QTest::newRow("2^53 + 1") << qint64(9007199254740993);
    QTest::newRow("smallest") << std::numeric_limits<qint64>::min();
    QTest::newRow("largest") << std::numeric_limits<qint64>::max();
}

void JsonPreferencesTest::integersAreExact()
{
    QFETCH(const qint64, integer);
    const ScratchFolder folder;
    JsonPreferences(folder.file()).setValue(u"key"_s, integer);
    QVERIFY(folder.bytes().contains(QByteArray::number(integer)));
    QCOMPARE(JsonPreferences(folder.file()).integer(u"key"_s), integer);
}

void JsonPreferencesTest::datesSurviveARestart()
{
    const ScratchFolder folder;
    const QDateTime date(QDate(2024, 2, 29), QTime(23, 30, 0, 125), QTimeZone(7200));
    JsonPreferences(folder.file()).setDate(u"OBLastCrashScan"_s, date);
    QVERIFY(folder.bytes().contains("\"2024-02-29T21:30:00.125Z\""));
    QCOMPARE(JsonPreferences(folder.file()).date(u"OBLastCrashScan"_s), date);
}

void JsonPreferencesTest::theFileIsReadable()
{
    const ScratchFolder folder;
    JsonPreferences preferences(folder.file());
    preferences.setValue(u"OBSoundEnabled"_s, true);
    preferences.setValue(u"OBIntervalMinutes"_s, 30);
    QCOMPARE(folder.bytes(), "{\n    \"OBSoundEnabled\": true,\n    \"OBIntervalMinutes\": 30\n}\n"_ba);
    QCOMPARE(folder.names(), QStringList{u"preferences.json"_s});
}

void JsonPreferencesTest::unknownMembersStay()
{
    const ScratchFolder folder;
    folder.write(R"({"theirs": {"a": [1, null, {"b": "c"}], "n": 9007199254740993}, "key": 1})");
    const QJsonValue theirs = QJsonDocument::fromJson(folder.bytes()).object().value(u"theirs"_s);
    JsonPreferences preferences(folder.file());
    preferences.setValue(u"key"_s, 2);
    preferences.setValue(u"key"_s, QJsonValue::Undefined);
    const QJsonObject stored = QJsonDocument::fromJson(folder.bytes()).object();
    QCOMPARE(stored, (QJsonObject{{u"theirs"_s, theirs}}));
    QVERIFY(folder.bytes().contains("9007199254740993"));
}

void JsonPreferencesTest::undefinedRemovesTheKey()
{
    const ScratchFolder folder;
    JsonPreferences preferences(folder.file());
    preferences.setValue(u"key"_s, 1);
    preferences.setValue(u"key"_s, QJsonValue::Undefined);
    QVERIFY(preferences.value(u"key"_s).isUndefined());
    QCOMPARE(folder.bytes(), "{\n}\n"_ba);
    QVERIFY(JsonPreferences(folder.file()).value(u"key"_s).isUndefined());
}

void JsonPreferencesTest::anEqualValueIsNotWritten()
{
    const ScratchFolder folder;
    JsonPreferences preferences(folder.file());
    preferences.setValue(u"none"_s, QJsonValue::Undefined);
    QVERIFY(folder.names().isEmpty());
    folder.write(R"({"key":[1,{"a":true}]})");
    const struct stat before = ScratchFolder::status(folder.file());
    preferences.setValue(u"key"_s, QJsonArray{1, QJsonObject{{u"a"_s, true}}});
    preferences.setValue(u"none"_s, QJsonValue::Undefined);
    QCOMPARE(ScratchFolder::status(folder.file()).st_ino, before.st_ino);
    QCOMPARE(folder.bytes(), R"({"key":[1,{"a":true}]})"_ba);
    preferences.setValue(u"key"_s, QJsonValue::Null);
    QVERIFY(ScratchFolder::status(folder.file()).st_ino != before.st_ino);
}

void JsonPreferencesTest::largeIntegersAreComparedExactly()
{
    const ScratchFolder folder;
    folder.write(R"({"key": 9223372036854775808})");
    constexpr qint64 largest = std::numeric_limits<qint64>::max();
    JsonPreferences(folder.file()).setValue(u"key"_s, largest);
    QCOMPARE(JsonPreferences(folder.file()).integer(u"key"_s), largest);
}

void JsonPreferencesTest::fileAndNewFoldersArePrivate()
{
    const ScratchFolder folder;
    const std::filesystem::path file = folder.path("config") / "OrvaneBreak" / "preferences.json";
    const mode_t oldMask = umask(0);
    JsonPreferences preferences(file);
    preferences.setValue(u"key"_s, 1);
    QCOMPARE(ScratchFolder::status(file).st_mode & permissionBits, 0600U);
    QCOMPARE(ScratchFolder::status(file.parent_path()).st_mode & permissionBits, 0700U);
    QCOMPARE(ScratchFolder::status(folder.path("config")).st_mode & permissionBits, 0700U);
    QCOMPARE(chmod(file.c_str(), 0644), 0);
    umask(0277);
    preferences.setValue(u"key"_s, 2);
    umask(oldMask);
    QCOMPARE(ScratchFolder::status(file).st_mode & permissionBits, 0600U);
}

void JsonPreferencesTest::foldersThatExistKeepTheirMode()
{
    const ScratchFolder folder;
    QCOMPARE(chmod(folder.path("").c_str(), 0755), 0);
    JsonPreferences(folder.file()).setValue(u"key"_s, 1);
    QCOMPARE(ScratchFolder::status(folder.path("")).st_mode & permissionBits, 0755U);
}

void JsonPreferencesTest::theFileIsFoundThroughTheEnvironment_data()
{
    QTest::addColumn<QByteArray>("configuration");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("absolute") << "/somewhere/else"_ba
                              << "/somewhere/else/OrvaneBreak/preferences.json"_ba;
    QTest::newRow("not UTF-8") << "/some\xffwhere"_ba
                               << "/some\xffwhere/OrvaneBreak/preferences.json"_ba;
    QTest::newRow("relative") << "some/where"_ba
                              << "/home/of/test/.config/OrvaneBreak/preferences.json"_ba;
    QTest::newRow("empty") << ""_ba
                           << "/home/of/test/.config/OrvaneBreak/preferences.json"_ba;
    QTest::newRow("missing") << QByteArray() << "/home/of/test/.config/OrvaneBreak/preferences.json"_ba;
}

void JsonPreferencesTest::theFileIsFoundThroughTheEnvironment()
{
    QFETCH(const QByteArray, configuration);
    QFETCH(const QByteArray, expected);
    const QByteArray oldConfiguration = qgetenv("XDG_CONFIG_HOME");
    const QByteArray oldHome = qgetenv("HOME");
    qputenv("HOME", "/home/of/test");
    if (configuration.isNull())
        qunsetenv("XDG_CONFIG_HOME");
    else
        qputenv("XDG_CONFIG_HOME", configuration);
    const std::filesystem::path file = JsonPreferences::defaultFile();
    qputenv("HOME", oldHome);
    qputenv("XDG_CONFIG_HOME", oldConfiguration);
    QCOMPARE(QByteArray(file.c_str()), expected);
}

void JsonPreferencesTest::valuesOfAnotherTypeAreAbsent_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("type");
    const QList<QPair<QByteArray, QByteArray>> types{
        {"null", ""},       {"true", "boolean"}, {"20", "integer"},
        {"20.5", "number"}, {"1e300", "number"}, {"\"20\"", "text"},
        {"[20]", "array"},  {"{\"a\": 20}", ""}, {"\"2024-01-02T03:04:05.678Z\"", "date"}};
    const QStringList keys{u"OBIntervalMinutes"_s, u"OBPauseSeconds"_s, u"OBSoundEnabled"_s,
                           u"OBMenuBarMode"_s,     u"OBOnboarded"_s,    u"OBDeviceId"_s,
                           u"OBShownMessages"_s,   u"OBAckMessage"_s,   u"OBMessageHistory"_s,
                           u"OBLastCrashScan"_s};
    for (const QString &key : keys) {
        for (const auto &[json, type] : types)
            QTest::addRow("%s: %s", qUtf8Printable(key), json.constData()) << key << json << type;
    }
}

void JsonPreferencesTest::valuesOfAnotherTypeAreAbsent()
{
    QFETCH(const QString, key);
    QFETCH(const QByteArray, json);
    QFETCH(const QByteArray, type);
    const ScratchFolder folder;
    folder.write("{\"" + key.toUtf8() + "\": " + json + "}");
    const JsonPreferences preferences(folder.file());
    QVERIFY(!preferences.value(key).isUndefined());
    QCOMPARE(preferences.integer(key).has_value(), type == "integer");
    QCOMPARE(preferences.boolean(key).has_value(), type == "boolean");
    QCOMPARE(preferences.text(key).has_value(), type == "text" || type == "date");
    QCOMPARE(preferences.array(key).has_value(), type == "array");
    QCOMPARE(preferences.date(key).has_value(), type == "date");
}

void JsonPreferencesTest::unusualContentIsPreserved_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("duplicates") << R"({"a": 1, "a": "x", "a": [2]})"_ba;
    QTest::newRow("NUL in text") << R"({"a\u0000b": "c\u0000d"})"_ba;
    QTest::newRow("lone surrogates") << R"({"a": "\ud800", "\udc00": "\udc00\ud800"})"_ba;
    QTest::newRow("deep") << "{\"a\": " + QByteArray(500, '[') + QByteArray(500, ']') + "}";
    QTest::newRow("huge number") << R"({"a": 123456789012345678901234567890})"_ba;
    QTest::newRow("empty name") << R"({"": {"": []}})"_ba;
    QTest::newRow("byte order mark") << "\xef\xbb\xbf{\"a\": 1}"_ba;
}

void JsonPreferencesTest::unusualContentIsPreserved()
{
    QFETCH(const QByteArray, json);
    const ScratchFolder folder;
    folder.write(json);
    const QJsonObject before = QJsonDocument::fromJson(json).object();
    QVERIFY(!before.isEmpty());
    JsonPreferences(folder.file()).setValue(u"key"_s, 1);
    QCOMPARE(JsonPreferences(folder.file()).integer(u"key"_s), 1);
    QCOMPARE(QJsonDocument::fromJson(folder.bytes()).object().size(), before.size() + 1);
    QCOMPARE(folder.names(), QStringList{u"preferences.json"_s});
}

void JsonPreferencesTest::unusualTextIsWritten()
{
    const ScratchFolder folder;
    const QString nul = u"a"_s + QChar(0) + u"b"_s;
    JsonPreferences preferences(folder.file());
    preferences.setValue(u"nul"_s, nul);
    preferences.setValue(u"surrogate"_s, surrogate());
    preferences.setValue(surrogate(), 1);
    preferences.setValue(u"not a number"_s, std::numeric_limits<double>::quiet_NaN());
    preferences.setValue(u"last"_s, 1);
    const JsonPreferences again(folder.file());
    QCOMPARE(again.text(u"nul"_s), nul);
    QVERIFY(again.text(u"surrogate"_s));
    QCOMPARE(again.integer(u"last"_s), 1);
    QCOMPARE(folder.names(), QStringList{u"preferences.json"_s});
}

ORVANE_TEST(JsonPreferencesTest, QCoreApplication)
#include "JsonPreferencesTest.moc"
