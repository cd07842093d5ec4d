// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateChoice.h"

#include "Support/TestProgram.h"

#include <QTest>
#include <QTimeZone>

using namespace Qt::StringLiterals;

namespace {

const QDateTime now(QDate(2026, 3, 3), QTime(12, 0), QTimeZone::utc());

AppcastItem offered(const QString &version)
{
    AppcastItem item;
    item.version = UpdateVersion(version);
    item.operatingSystem = u"linux"_s;
    item.architecture = u"x86_64"_s;
    item.date = now.addDays(-1);
    return item;
}

UpdateCircumstances defaults()
{
    return {UpdateVersion(u"1.2"_s), u"linux"_s, u"x86_64"_s, UpdateVersion(u"6.1"_s), now, {}, 0, false};
}

/// The chosen version, or the reason why there is none.
QString outcome(const std::vector<AppcastItem> &items, const UpdateCircumstances &circumstances = defaults())
{
    const auto choice = chooseUpdate({items, {}, 1, {}}, circumstances);
    if (const auto *item = std::get_if<AppcastItem>(&choice))
        return item->version.text();
    switch (std::get<NoUpdate>(choice)) {
    case NoUpdate::EmptyFeed:
        return u"empty"_s;
    case NoUpdate::OtherSystem:
        return u"other system"_s;
    case NoUpdate::FromTheFuture:
        return u"future"_s;
    case NoUpdate::UpToDate:
        return u"up to date"_s;
    case NoUpdate::SystemTooOld:
        return u"system too old"_s;
    case NoUpdate::Skipped:
        return u"skipped"_s;
    case NoUpdate::Unusable:
        return u"unusable"_s;
    }
    return {};
}

} // namespace

class UpdateChoiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void newestWins()
    {
        QCOMPARE(outcome({}), u"empty"_s);
        QCOMPARE(outcome({offered(u"1.3"_s), offered(u"1.10"_s), offered(u"1.9"_s)}), u"1.10"_s);
        QCOMPARE(outcome({offered(u"1.3.0"_s), offered(u"1.3"_s)}), u"1.3.0"_s);
        QCOMPARE(outcome({offered(u"1.2.0"_s), offered(u"1.1"_s)}), u"up to date"_s);
        QCOMPARE(outcome({offered(u"1.2-beta.1"_s)}), u"up to date"_s);
        QCOMPARE(outcome({offered(u"1.3-beta.1"_s)}), u"1.3-beta.1"_s);
    }

    static void noUpdateForAnUnknownVersion()
    {
        UpdateCircumstances circumstances = defaults();
        circumstances.installed = UpdateVersion();
        QCOMPARE(outcome({offered(u"9"_s)}, circumstances), u"up to date"_s);
    }

    static void onlyForThisSystem_data()
    {
        QTest::addColumn<QString>("system");
        QTest::addColumn<QString>("architecture");
        QTest::newRow("mac") << u"macos"_s << u"x86_64"_s;
        QTest::newRow("no system") << QString() << u"x86_64"_s;
        QTest::newRow("arm") << u"linux"_s << u"aarch64"_s;
        QTest::newRow("no architecture") << u"linux"_s << QString();
    }

    static void onlyForThisSystem()
    {
        QFETCH(const QString, system);
        QFETCH(const QString, architecture);
        AppcastItem foreign = offered(u"9"_s);
        foreign.operatingSystem = system;
        foreign.architecture = architecture;
        QCOMPARE(outcome({foreign}), u"other system"_s);
        QCOMPARE(outcome({foreign, offered(u"1.3"_s), foreign}), u"1.3"_s);
    }

    static void bothNamesOfAnArchitecture_data()
    {
        QTest::addColumn<QString>("installed");
        QTest::addColumn<QString>("inFeed");
        QTest::newRow("arm64") << u"arm64"_s << u"aarch64"_s;
        QTest::newRow("aarch64") << u"aarch64"_s << u"arm64"_s;
        QTest::newRow("x86_64") << u"x86_64"_s << u"amd64"_s;
        QTest::newRow("amd64") << u"amd64"_s << u"x86_64"_s;
    }

    static void bothNamesOfAnArchitecture()
    {
        QFETCH(const QString, installed);
        QFETCH(const QString, inFeed);
        UpdateCircumstances circumstances = defaults();
        circumstances.architecture = installed;
        AppcastItem item = offered(u"1.3"_s);
        item.architecture = inFeed;
        QCOMPARE(outcome({item}, circumstances), u"1.3"_s);
    }

    static void minimumSystemVersion()
    {
        AppcastItem item = offered(u"1.4"_s);
        item.minimumSystemVersion = UpdateVersion(u"6.1.0"_s);
        QCOMPARE(outcome({item}), u"1.4"_s);
        item.minimumSystemVersion = UpdateVersion(u"6.1.1"_s);
        QCOMPARE(outcome({item}), u"system too old"_s);
        QCOMPARE(outcome({item, offered(u"1.3"_s)}), u"1.3"_s);
        UpdateCircumstances unknown = defaults();
        unknown.systemVersion = UpdateVersion();
        QCOMPARE(outcome({item}, unknown), u"system too old"_s);
        item.minimumSystemVersion = UpdateVersion();
        QCOMPARE(outcome({item}, unknown), u"1.4"_s);
    }

    static void maximumSystemVersion()
    {
        AppcastItem item = offered(u"1.4"_s);
        item.maximumSystemVersion = UpdateVersion(u"6.1"_s);
        QCOMPARE(outcome({item}), u"1.4"_s);
        item.maximumSystemVersion = UpdateVersion(u"6.0"_s);
        QCOMPARE(outcome({item}), u"other system"_s);
        UpdateCircumstances unknown = defaults();
        unknown.systemVersion = UpdateVersion();
        QCOMPARE(outcome({item}, unknown), u"other system"_s);
    }

    static void anUnknownConditionIsNotMet()
    {
        AppcastItem item = offered(u"1.4"_s);
        item.isRestricted = true;
        QCOMPARE(outcome({item}), u"other system"_s);
        QCOMPARE(outcome({item, offered(u"1.3"_s)}), u"1.3"_s);
    }

    static void groupsOfUsersFollowOneAnother()
    {
        AppcastItem item = offered(u"1.4"_s);
        item.date = now.addDays(-2);
        item.rolloutInterval = std::chrono::hours(24);
        UpdateCircumstances circumstances = defaults();
        circumstances.rolloutGroup = 2;
        QCOMPARE(outcome({item}, circumstances), u"1.4"_s);
        circumstances.rolloutGroup = 3;
        QCOMPARE(outcome({item}, circumstances), u"skipped"_s);
        circumstances.isAskedByUser = true;
        QCOMPARE(outcome({item}, circumstances), u"1.4"_s);
        circumstances.isAskedByUser = false;
        item.isCritical = true;
        QCOMPARE(outcome({item}, circumstances), u"1.4"_s);
    }

    static void aNewerVersionThatIsUnusable()
    {
        const auto reason = [](const QString &version) {
            return std::get<NoUpdate>(
                chooseUpdate({{offered(u"1.2"_s)}, UpdateVersion(version), 1, {}}, defaults()));
        };
        QCOMPARE(reason(u"1.3"_s), NoUpdate::Unusable);
        QCOMPARE(reason(u"1.2"_s), NoUpdate::UpToDate);
    }

    static void nothingFromTheFuture()
    {
        AppcastItem item = offered(u"1.4"_s);
        item.date = now.addDays(1);
        QCOMPARE(outcome({item}), u"1.4"_s);
        item.date = now.addDays(1).addSecs(1);
        QCOMPARE(outcome({item}), u"future"_s);
        QCOMPARE(outcome({item, offered(u"1.3"_s)}), u"1.3"_s);
        item.date = QDateTime();
        QCOMPARE(outcome({item}), u"1.4"_s);
    }

    static void skippedUnlessCriticalOrAskedFor()
    {
        UpdateCircumstances circumstances = defaults();
        circumstances.skipped = UpdateVersion(u"1.4"_s);
        const AppcastItem item = offered(u"1.4.0"_s);
        QCOMPARE(outcome({item}, circumstances), u"skipped"_s);
        // Skipping a version also skips older ones.
        QCOMPARE(outcome({item, offered(u"1.3"_s)}, circumstances), u"skipped"_s);
        QCOMPARE(outcome({item, offered(u"1.5"_s)}, circumstances), u"1.5"_s);
        AppcastItem critical = offered(u"1.3"_s);
        critical.isCritical = true;
        QCOMPARE(outcome({item, critical}, circumstances), u"1.3"_s);
        circumstances.isAskedByUser = true;
        QCOMPARE(outcome({item}, circumstances), u"1.4.0"_s);
    }

    static void theClosestReasonIsReturned()
    {
        AppcastItem foreign = offered(u"9"_s);
        foreign.operatingSystem = u"macos"_s;
        AppcastItem demanding = offered(u"2"_s);
        demanding.minimumSystemVersion = UpdateVersion(u"99"_s);
        QCOMPARE(outcome({foreign, offered(u"1.2"_s)}), u"up to date"_s);
        QCOMPARE(outcome({demanding, foreign, offered(u"1.2"_s)}), u"system too old"_s);
    }
};

ORVANE_TEST(UpdateChoiceTest, TestProgram::NoApplication)
#include "UpdateChoiceTest.moc"
