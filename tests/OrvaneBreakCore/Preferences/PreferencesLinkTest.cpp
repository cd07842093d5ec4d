// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonPreferences.h"
#include "Support/ScratchFolder.h"
#include "Support/TestProgram.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString key = u"key"_s;

} // namespace

/// The file is behind symbolic links.
class PreferencesLinkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }
    void aLinkIsFollowed();
    void changesBehindALinkAreSeen();
    void aChangedLinkIsSeen();
    void aNewLinkIsSeen();
    void theTargetOfADanglingLinkIsCreated();
};

void PreferencesLinkTest::aLinkIsFollowed()
{
    const ScratchFolder folder;
    std::filesystem::create_directory(folder.path("dotfiles"));
    const std::filesystem::path target = folder.path("dotfiles") / "mine.json";
    ScratchFolder::writeTo(target, R"({"key": 1})");
    std::filesystem::create_symlink("dotfiles/mine.json", folder.path("middle"));
    std::filesystem::create_symlink(folder.path("middle"), folder.file());
    JsonPreferences preferences(folder.file());
    QCOMPARE(preferences.integer(key), 1);
    preferences.setValue(key, 2);
    QVERIFY(std::filesystem::is_symlink(folder.file()));
    QVERIFY(std::filesystem::is_symlink(folder.path("middle")));
    QVERIFY(!std::filesystem::is_symlink(target));
    QCOMPARE(ScratchFolder::bytesOf(target), "{\n    \"key\": 2\n}\n"_ba);
    QCOMPARE(folder.names(), (QStringList{u"dotfiles"_s, u"middle"_s, u"preferences.json"_s}));
}

void PreferencesLinkTest::changesBehindALinkAreSeen()
{
    const ScratchFolder folder;
    std::filesystem::create_directory(folder.path("dotfiles"));
    const std::filesystem::path target = folder.path("dotfiles") / "mine.json";
    ScratchFolder::writeTo(target, R"({"key": 1})");
    std::filesystem::create_symlink(target, folder.file());
    JsonPreferences preferences(folder.file());
    ScratchFolder::writeTo(target, R"({"key": 2})");
    QCOMPARE(preferences.integer(key), 2);
    preferences.setValue(key, 3);
    ScratchFolder::writeTo(target, R"({"key": 4})");
    QCOMPARE(preferences.integer(key), 4);
}

void PreferencesLinkTest::aChangedLinkIsSeen()
{
    const ScratchFolder folder;
    ScratchFolder::writeTo(folder.path("first"), R"({"key": 1})");
    std::filesystem::create_directory(folder.path("other"));
    ScratchFolder::writeTo(folder.path("other") / "second", R"({"key": 2})");
    std::filesystem::create_symlink("first", folder.file());
    const JsonPreferences preferences(folder.file());
    QCOMPARE(preferences.integer(key), 1);
    std::filesystem::create_symlink("other/second", folder.path("new"));
    std::filesystem::rename(folder.path("new"), folder.file());
    QCOMPARE(preferences.integer(key), 2);
    ScratchFolder::writeTo(folder.path("other") / "second", R"({"key": 3})");
    QCOMPARE(preferences.integer(key), 3);
}

void PreferencesLinkTest::aNewLinkIsSeen()
{
    const ScratchFolder folder;
    ScratchFolder::writeTo(folder.path("target"), R"({"key": 1})");
    const JsonPreferences preferences(folder.file());
    QVERIFY(preferences.value(key).isUndefined());
    std::filesystem::create_symlink("target", folder.file());
    QCOMPARE(preferences.integer(key), 1);
}

void PreferencesLinkTest::theTargetOfADanglingLinkIsCreated()
{
    const ScratchFolder folder;
    std::filesystem::create_symlink("target", folder.file());
    JsonPreferences preferences(folder.file());
    preferences.setValue(key, 1);
    QVERIFY(std::filesystem::is_symlink(folder.file()));
    QCOMPARE(ScratchFolder::bytesOf(folder.path("target")), "{\n    \"key\": 1\n}\n"_ba);
}

ORVANE_TEST(PreferencesLinkTest, QCoreApplication)
#include "PreferencesLinkTest.moc"
