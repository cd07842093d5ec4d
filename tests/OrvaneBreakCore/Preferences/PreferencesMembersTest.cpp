// SPDX-License-Identifier: GPL-3.0-or-later
#include "PreferencesMembers.h"

#include "JsonPreferences.h"
#include "Support/ScratchFolder.h"
#include "Support/TestProgram.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString key = u"key"_s;

/// A conversation of `count` replies with `length` characters each, of which every one is escaped.
QJsonArray conversation(int count, qsizetype length)
{
    QJsonArray result;
    for (int number = 0; number < count; ++number)
        result.append(QJsonObject{{u"id"_s, number}, {u"body"_s, QString(length, QChar(1))}});
    return result;
}

} // namespace

/// What other programs wrote stays as they wrote it, at any size.
class PreferencesMembersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }
    void theTextOfOtherMembersStays_data();
    void theTextOfOtherMembersStays();
    void aChangedMemberKeepsItsPlace();
    void anUnchangedFileIsTheSameText();
    void filesOfEverySize_data();
    void filesOfEverySize();
    void theLongestConversationOfReplies();
    void aTooLargeValueIsHeldBackAlone();
};

void PreferencesMembersTest::theTextOfOtherMembersStays_data()
{
    QTest::addColumn<QByteArray>("member");
    for (const char *number : {"12345678901234567890", "1.0", "1e400", "-1E+400", "-0", "1E5", "0.10",
                               "123456789012345678901234567890.5", "-9223372036854775809"})
        QTest::newRow(number) << "\"theirs\": "_ba + number;
    QTest::newRow("numbers inside") << R"("theirs": {"z": [1.0, 1e400 ,-0], "a": 18446744073709551616})"_ba;
    QTest::newRow("spaces") << "\"theirs\" \t:\r\n [1 ,\n\t2 ]"_ba;
    QTest::newRow("escapes") << R"("th\u0065irs": "\/\u00e9\\\"{,}[")"_ba;
    QTest::newRow("surrogates") << R"("theirs": "\ud83d\ude00 \ud800 \\ud800 \uDC00")"_ba;
    QTest::newRow("duplicates inside") << R"("theirs": {"a": 1, "a": 2.0})"_ba;
    QTest::newRow("literals") << R"("theirs": [true, false, null, "", {}, []])"_ba;
    QTest::newRow("deep") << R"("theirs": )" + QByteArray(100'000, '[') + QByteArray(100'000, ']');
    QTest::newRow("no name") << R"("": "é😀")"_ba;
}

void PreferencesMembersTest::theTextOfOtherMembersStays()
{
    QFETCH(const QByteArray, member);
    for (const QByteArray &before : {"{\n    \"z\": 1.50,\n    " + member + ",\n    \"key\": 1\n}\n",
                                     "\xef\xbb\xbf{\"z\":1.50, " + member + " ,\"key\":1}"}) {
        const ScratchFolder folder;
        folder.write(before);
        JsonPreferences preferences(folder.file());
        QCOMPARE(preferences.integer(key), 1);
        preferences.setValue(key, 2);
        QCOMPARE(preferences.integer(key), 2);
        const QByteArray first = before.startsWith("{\n") ? "\"z\": 1.50" : "\"z\":1.50";
        QCOMPARE(folder.bytes(), "{\n    " + first + ",\n    " + member + ",\n    \"key\": 2\n}\n");
        QCOMPARE(folder.names(), QStringList{u"preferences.json"_s});
    }
}

void PreferencesMembersTest::aChangedMemberKeepsItsPlace()
{
    std::optional<PreferencesMembers> members =
        PreferencesMembers::parse(R"({"z": 1, "key": 1, "a": 1e400, "key": 2, "b": 1})");
    QVERIFY(members);
    QCOMPARE(members->value(key), QJsonValue(2));
    QVERIFY(members->value(u"a"_s).isUndefined());
    members->set(key, 3);
    members->set(u"b"_s, QJsonValue::Undefined);
    members->set(u"new"_s, true);
    QCOMPARE(members->json(),
             "{\n    \"z\": 1,\n    \"key\": 3,\n    \"a\": 1e400,\n    \"new\": true\n}\n"_ba);
    members->set(u"a"_s, 1);
    QCOMPARE(members->value(u"a"_s), QJsonValue(1));
}

void PreferencesMembersTest::anUnchangedFileIsTheSameText()
{
    PreferencesMembers members;
    QCOMPARE(members.json(), "{\n}\n"_ba);
    members.set(u"object"_s, QJsonObject{{u"list"_s, QJsonArray{1, u"a"_s}}, {u"none"_s, QJsonArray()}});
    members.set(u"é\n"_s, u"\u2028"_s);
    const std::optional<PreferencesMembers> again = PreferencesMembers::parse(members.json());
    QVERIFY(again);
    QVERIFY(*again == members);
    QCOMPARE(again->json(), members.json());
}

void PreferencesMembersTest::filesOfEverySize_data()
{
    QTest::addColumn<qsizetype>("size");
    for (const qsizetype size : {900'000, 1'048'576, 1'100'000, 20'000'000})
        QTest::addRow("%lld", static_cast<long long>(size)) << size;
}

void PreferencesMembersTest::filesOfEverySize()
{
    QFETCH(const qsizetype, size);
    const ScratchFolder folder;
    const QString text(size, u'x');
    JsonPreferences preferences(folder.file());
    preferences.setValue(u"OBMessageHistory"_s, QJsonArray{QJsonObject{{u"body"_s, text}}});
    preferences.setValue(key, 1);
    JsonPreferences again(folder.file());
    QCOMPARE(again.array(u"OBMessageHistory"_s)->at(0)[u"body"_s].toString().size(), size);
    again.setValue(key, 2);
    QVERIFY(folder.bytes().endsWith(",\n    \"key\": 2\n}\n"));
    QCOMPARE(folder.names(), QStringList{u"preferences.json"_s});
}

void PreferencesMembersTest::theLongestConversationOfReplies()
{
    const ScratchFolder folder;
    const QJsonArray longest = conversation(50, 20'000);
    JsonPreferences preferences(folder.file());
    preferences.setValue(u"OBMessageHistory"_s, longest);
    preferences.setValue(u"OBAckMessage"_s, 7);
    QVERIFY(folder.bytes().size() > 6'000'000);
    const JsonPreferences again(folder.file());
    QVERIFY(again.array(u"OBMessageHistory"_s) == longest);
    QCOMPARE(again.integer(u"OBAckMessage"_s), 7);
}

void PreferencesMembersTest::aTooLargeValueIsHeldBackAlone()
{
    const ScratchFolder folder;
    JsonPreferences preferences(folder.file());
    const QString large(12'000'000, QChar(1));
    preferences.setValue(u"large"_s, large);
    QVERIFY(preferences.text(u"large"_s) == large);
    QVERIFY(folder.names().isEmpty());
    preferences.setValue(key, 1);
    QCOMPARE(folder.bytes(), "{\n    \"key\": 1\n}\n"_ba);
    QVERIFY(preferences.text(u"large"_s) == large);
    preferences.setValue(u"large"_s, u"small"_s);
    QCOMPARE(JsonPreferences(folder.file()).text(u"large"_s), u"small"_s);
}

ORVANE_TEST(PreferencesMembersTest, QCoreApplication)
#include "PreferencesMembersTest.moc"
