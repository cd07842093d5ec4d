// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonPreferences.h"
#include "Support/ScratchFolder.h"
#include "Support/TestProgram.h"

#include <QTest>

#include <fcntl.h>
#include <sched.h>

using namespace Qt::StringLiterals;

namespace {

const QString key = u"key"_s;

/// Makes the kernel refuse inotify to this process.
bool forbidInotify()
{
    if (unshare(CLONE_NEWUSER) != 0)
        return false;
    const int limit = open("/proc/sys/user/max_inotify_instances", O_WRONLY | O_CLOEXEC);
    return limit >= 0 && write(limit, "0", 1) == 1;
}

} // namespace

/// Other programs change the file while this one runs.
class PreferencesEditingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }
    void aChangeInPlaceIsSeenAtOnce();
    void aReplacedFileIsSeenAtOnce();
    void aNewFileIsSeenAtOnce();
    void aNewFolderIsSeenAtOnce();
    void aDeletedFileHoldsNoValues();
    void aDeletedFolderHoldsNoValues();
    void anEmptiedFileKeepsWhatWasKnown();
    void aFolderThatComesBackIsWatched();
    void aFolderMovedWithItsParentIsNoticedAtTheNextChange();
    void aParentReplacedByAFileIsNoticedAtTheNextChange();
    void readsTakeTheValuesFromMemory();
    void ownChangesAreNotReadBack();
    void anotherProgramsChangeIsKept();
    void aValueIsComparedWithTheCurrentFile();
    void twoInstancesSeeEachOther();
    void withoutInotifyChangesAreSeenToo();
};

void PreferencesEditingTest::aChangeInPlaceIsSeenAtOnce()
{
    const ScratchFolder folder;
    folder.write(R"({"key": 1})");
    const JsonPreferences preferences(folder.file());
    for (int value = 1; value < 100; ++value) {
        folder.write("{\"key\": " + QByteArray::number(value) + "}");
        QCOMPARE(preferences.integer(key), value);
    }
}

void PreferencesEditingTest::aReplacedFileIsSeenAtOnce()
{
    const ScratchFolder folder;
    folder.write(R"({"key": 1})");
    const JsonPreferences preferences(folder.file());
    for (int value = 1; value < 100; ++value) {
        folder.replace("{\"key\": " + QByteArray::number(value) + "}");
        QCOMPARE(preferences.integer(key), value);
    }
}

void PreferencesEditingTest::aNewFileIsSeenAtOnce()
{
    const ScratchFolder folder;
    const JsonPreferences preferences(folder.file());
    QVERIFY(preferences.value(key).isUndefined());
    folder.write(R"({"key": 1})");
    QCOMPARE(preferences.integer(key), 1);
}

void PreferencesEditingTest::aNewFolderIsSeenAtOnce()
{
    const ScratchFolder folder;
    const std::filesystem::path file = folder.path("a") / "b" / "preferences.json";
    const JsonPreferences preferences(file);
    QVERIFY(preferences.value(key).isUndefined());
    std::filesystem::create_directories(file.parent_path());
    QVERIFY(preferences.value(key).isUndefined());
    ScratchFolder::writeTo(file, R"({"key": 1})");
    QCOMPARE(preferences.integer(key), 1);
}

void PreferencesEditingTest::aDeletedFileHoldsNoValues()
{
    const ScratchFolder folder;
    folder.write(R"({"key": 1, "other": 2})");
    JsonPreferences preferences(folder.file());
    std::filesystem::remove(folder.file());
    QVERIFY(preferences.value(key).isUndefined());
    preferences.setValue(key, 3);
    QCOMPARE(folder.bytes(), "{\n    \"key\": 3\n}\n"_ba);
}

void PreferencesEditingTest::aDeletedFolderHoldsNoValues()
{
    const ScratchFolder folder;
    const std::filesystem::path file = folder.path("OrvaneBreak") / "preferences.json";
    JsonPreferences preferences(file);
    preferences.setValue(key, 1);
    std::filesystem::remove_all(file.parent_path());
    QVERIFY(preferences.value(key).isUndefined());
    preferences.setValue(key, 2);
    QCOMPARE(JsonPreferences(file).integer(key), 2);
}

void PreferencesEditingTest::anEmptiedFileKeepsWhatWasKnown()
{
    const ScratchFolder folder;
    folder.write(R"({"theirs": 1.0, "key": 1})");
    JsonPreferences preferences(folder.file());
    folder.write("");
    QCOMPARE(preferences.integer(key), 1);
    preferences.setValue(u"other"_s, 2);
    QCOMPARE(folder.bytes(), "{\n    \"theirs\": 1.0,\n    \"key\": 1,\n    \"other\": 2\n}\n"_ba);
    QCOMPARE(folder.names(), QStringList{u"preferences.json"_s});
}

void PreferencesEditingTest::aFolderThatComesBackIsWatched()
{
    const ScratchFolder folder;
    const std::filesystem::path file = folder.path("OrvaneBreak") / "preferences.json";
    JsonPreferences preferences(file);
    preferences.setValue(key, 1);
    for (int value = 2; value < 5; ++value) {
        std::filesystem::rename(file.parent_path(), folder.path("old" + std::to_string(value)));
        std::filesystem::create_directory(file.parent_path());
        ScratchFolder::writeTo(file, "{\"key\": " + QByteArray::number(value) + "}");
        QCOMPARE(preferences.integer(key), value);
        ScratchFolder::writeTo(file, "{\"key\": " + QByteArray::number(value * 10) + "}");
        QCOMPARE(preferences.integer(key), value * 10);
    }
}

void PreferencesEditingTest::aFolderMovedWithItsParentIsNoticedAtTheNextChange()
{
    const ScratchFolder folder;
    const std::filesystem::path file = folder.path("config") / "OrvaneBreak" / "preferences.json";
    JsonPreferences preferences(file);
    preferences.setValue(key, 1);
    std::filesystem::rename(folder.path("config"), folder.path("moved"));
    preferences.setValue(u"other"_s, 2);
    QVERIFY(preferences.value(key).isUndefined());
    ScratchFolder::writeTo(file, R"({"key": 3})");
    QCOMPARE(preferences.integer(key), 3);
}

void PreferencesEditingTest::aParentReplacedByAFileIsNoticedAtTheNextChange()
{
    const ScratchFolder folder;
    JsonPreferences preferences(folder.path("config") / "OrvaneBreak" / "preferences.json");
    preferences.setValue(key, 1);
    std::filesystem::rename(folder.path("config"), folder.path("moved"));
    ScratchFolder::writeTo(folder.path("config"), "a file");
    preferences.setValue(u"other"_s, 2);
    QVERIFY(preferences.value(key).isUndefined());
    QCOMPARE(preferences.integer(u"other"_s), 2);
}

void PreferencesEditingTest::readsTakeTheValuesFromMemory()
{
    const ScratchFolder folder;
    folder.write(R"({"key": 1})");
    const JsonPreferences preferences(folder.file());
    // inotify reports the change when the file is closed; until then only a disk read would see it.
    QFile file(folder.file());
    QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    QCOMPARE(file.write(R"({"key": 2})"), 10);
    QCOMPARE(preferences.integer(key), 1);
    file.close();
    QCOMPARE(preferences.integer(key), 2);
}

void PreferencesEditingTest::ownChangesAreNotReadBack()
{
    const ScratchFolder folder;
    JsonPreferences preferences(folder.file());
    preferences.setValue(key, 1);
    QFile file(folder.file());
    QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    QCOMPARE(file.write(R"({"key": 2         })"), 19);
    QCOMPARE(preferences.integer(key), 1);
    file.close();
    QCOMPARE(preferences.integer(key), 2);
}

void PreferencesEditingTest::anotherProgramsChangeIsKept()
{
    const ScratchFolder folder;
    folder.write(R"({"key": 1, "other": 1})");
    JsonPreferences preferences(folder.file());
    folder.write(R"({"key": 1, "other": 2})");
    preferences.setValue(key, 2);
    QCOMPARE(preferences.integer(u"other"_s), 2);
    QCOMPARE(JsonPreferences(folder.file()).integer(u"other"_s), 2);
}

void PreferencesEditingTest::aValueIsComparedWithTheCurrentFile()
{
    const ScratchFolder folder;
    folder.write(R"({"key": 1})");
    JsonPreferences preferences(folder.file());
    folder.write(R"({"key": 2})");
    preferences.setValue(key, 1);
    QCOMPARE(JsonPreferences(folder.file()).integer(key), 1);
}

void PreferencesEditingTest::twoInstancesSeeEachOther()
{
    const ScratchFolder folder;
    JsonPreferences first(folder.file());
    JsonPreferences second(folder.file());
    for (int value = 1; value < 50; ++value) {
        first.setValue(u"first"_s, value);
        second.setValue(u"second"_s, value);
        QCOMPARE(second.integer(u"first"_s), value);
        QCOMPARE(first.integer(u"second"_s), value);
    }
}

void PreferencesEditingTest::withoutInotifyChangesAreSeenToo()
{
    constexpr int skipped = 100;
    const int status = runInChild([] {
        if (!forbidInotify())
            return skipped;
        const ScratchFolder folder;
        const std::filesystem::path file = folder.path("OrvaneBreak") / "preferences.json";
        JsonPreferences preferences(file);
        if (!preferences.value(key).isUndefined())
            return 1;
        preferences.setValue(key, 1);
        if (preferences.integer(key) != 1)
            return 2;
        ScratchFolder::writeTo(file, R"({"key": 22})");
        if (preferences.integer(key) != 22)
            return 3;
        std::filesystem::remove_all(file.parent_path());
        return preferences.value(key).isUndefined() ? 0 : 4;
    });
    if (status == skipped)
        QSKIP("this process may not lower its own limits");
    QCOMPARE(status, 0);
}

ORVANE_TEST(PreferencesEditingTest, QCoreApplication)
#include "PreferencesEditingTest.moc"
