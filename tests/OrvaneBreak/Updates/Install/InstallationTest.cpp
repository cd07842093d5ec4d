// SPDX-License-Identifier: GPL-3.0-or-later
#include "InstallationFixture.h"
#include "Support/TestProgram.h"

using namespace Qt::StringLiterals;

namespace {

UpdateVersion version(const char *text)
{
    return UpdateVersion(QString::fromLatin1(text));
}

NoInstallation reason(const std::filesystem::path &bin)
{
    return std::get<NoInstallation>(Installation::ofProgram(bin));
}

std::filesystem::path unpacked(const InstallationChange &change, const std::string &version)
{
    const auto result =
        unpackArchive(LibarchiveReader(ArchiveMaker::packedUpdate(version)), change.newStagingFolder());
    return std::get<UnpackedUpdate>(result).folder;
}

/// Installs and activates version `to`.
void update(const InstallationFixture &f, const char *from, const char *to)
{
    auto change = InstallationChange::begin(f.seenBy(from));
    QVERIFY(change);
    QCOMPARE(change->stage(unpacked(*change, to), version(to)), std::nullopt);
    QCOMPARE(change->activate(version(to)), std::nullopt);
}

void confirm(const InstallationFixture &f, const char *running)
{
    auto change = InstallationChange::begin(f.seenBy(running));
    QVERIFY(change);
    QCOMPARE(change->confirm(), std::nullopt);
}

} // namespace

class InstallationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void foundFromTheProgram()
    {
        const InstallationFixture f;
        for (const char *bin : {"versions/1.2/bin", "current/bin", "current/lib/../bin"}) {
            const auto found = Installation::ofProgram(f.root() / bin);
            QVERIFY(std::holds_alternative<Installation>(found));
            QCOMPARE(std::get<Installation>(found).root(), std::filesystem::canonical(f.root()));
            QCOMPARE(std::get<Installation>(found).running().text(), u"1.2"_s);
            QCOMPARE(std::get<Installation>(found).current().text(), u"1.2"_s);
            QVERIFY(!std::get<Installation>(found).previous().isValid());
            QVERIFY(!std::get<Installation>(found).trial().version.isValid());
        }
    }

    static void programsThatAreNoInstallation()
    {
        const InstallationFixture f;
        QCOMPARE(reason("/usr/bin"), NoInstallation::PackageManager);
        QCOMPARE(reason("/usr/bin/../bin"), NoInstallation::PackageManager);
        std::filesystem::create_directories(f.root() / "build/bin");
        QCOMPARE(reason(f.root() / "build/bin"), NoInstallation::BuildTree);
        QCOMPARE(reason(f.root() / "current/lib"), NoInstallation::BuildTree);
        QCOMPARE(reason(f.root() / "nowhere"), NoInstallation::BuildTree);
        std::filesystem::remove(f.root() / "current");
        QCOMPARE(reason(f.root() / "versions/1.2/bin"), NoInstallation::BuildTree);
        std::filesystem::create_directory_symlink("1.2", f.root() / "current");
        QCOMPARE(reason(f.root() / "versions/1.2/bin"), NoInstallation::BuildTree);
    }

    static void aReadOnlyInstallation()
    {
        const InstallationFixture f;
        constexpr auto readable = std::filesystem::perms(0755);
        constexpr int unreachable = 77;
        const std::filesystem::path bin = f.root() / "versions/1.2/bin";
        for (const auto &folder : f.ownFolders())
            std::filesystem::permissions(folder, readable);
        const int status = runInChild([&] {
            // Permissions do not restrict root, so another user asks.
            constexpr uid_t nobody = 65534;
            if (geteuid() == 0 && setresuid(nobody, nobody, nobody) != 0)
                return unreachable;
            if (geteuid() != nobody)
                std::filesystem::permissions(f.root(), std::filesystem::perms(0555));
            if (access(bin.c_str(), F_OK) != 0)
                return unreachable;
            return reason(bin) == NoInstallation::NotWritable ? 0 : 1;
        });
        std::filesystem::permissions(f.root(), readable);
        if (status == unreachable)
            QSKIP("the folder of temporary files is closed to other users");
        QCOMPARE(status, 0);
    }

    static void anUpdatePassesItsTrial()
    {
        const InstallationFixture f;
        update(f, "1.2", "1.3");
        const Installation seen = f.seenBy("1.3");
        QCOMPARE(seen.current().text(), u"1.3"_s);
        QCOMPARE(seen.previous().text(), u"1.2"_s);
        QVERIFY(seen.trial().version.isValid());
        QCOMPARE(ScratchFolder::bytesOf(f.root() / "trial"), "1.3\n0\n");
        QCOMPARE(std::filesystem::read_symlink(f.root() / "current"), "versions/1.3");
        QVERIFY(std::filesystem::equivalent(seen.launcher(), f.root() / "versions/1.3/bin/orvanebreak"));
        QVERIFY(f.isComplete("1.2") && f.isComplete("1.3"));

        confirm(f, "1.3");
        QVERIFY(!seen.trial().version.isValid());
        QCOMPARE(f.names(), (QStringList{u".lock"_s, u"current"_s, u"previous"_s, u"versions"_s}));
        QCOMPARE(f.versions(), (QStringList{u"1.2"_s, u"1.3"_s}));
    }

    static void oldVersionsAreRemovedAfterTheTrial()
    {
        const InstallationFixture f;
        QVERIFY(QDir(f.root()).mkpath(u"versions/of mine"_s));
        update(f, "1.2", "1.3");
        confirm(f, "1.3");
        update(f, "1.3", "1.4");
        QVERIFY(f.isComplete("1.2"));
        // A running program of the old version does not end the trial.
        confirm(f, "1.3");
        QVERIFY(f.seenBy("1.4").trial().version.isValid());
        QCOMPARE(f.versions(), (QStringList{u"1.2"_s, u"1.3"_s, u"1.4"_s, u"of mine"_s}));
        confirm(f, "1.4");
        QCOMPARE(f.versions(), (QStringList{u"1.3"_s, u"1.4"_s, u"of mine"_s}));
        QVERIFY(f.isComplete("1.3") && f.isComplete("1.4"));
    }

    static void rollback()
    {
        const InstallationFixture f;
        update(f, "1.2", "1.3");
        // What the launcher does when the new version fails.
        std::filesystem::rename(f.root() / "previous", f.root() / "current");
        std::filesystem::remove(f.root() / "trial");
        const Installation seen = f.seenBy("1.2");
        QCOMPARE(seen.current().text(), u"1.2"_s);
        QVERIFY(!seen.trial().version.isValid());
        confirm(f, "1.2");
        QCOMPARE(f.versions(), QStringList{u"1.2"_s});
        update(f, "1.2", "1.3");
        QVERIFY(f.seenBy("1.3").trial().version.isValid());
    }

    static void invalidVersionsAreRefused()
    {
        const InstallationFixture f;
        auto change = InstallationChange::begin(f.seenBy("1.2"));
        QVERIFY(change);
        const std::filesystem::path folder = unpacked(*change, "1.3");
        QVERIFY(change->stage(folder, version("../1.3")).has_value());
        QVERIFY(change->stage(folder, version("1.2")).has_value());
        QVERIFY(change->stage(f.root() / "versions/1.2", version("1.3")).has_value());
        QVERIFY(change->stage(folder / "lib", version("1.3")).has_value());
        std::filesystem::remove(folder / "bin/orvanebreak-program");
        QVERIFY(change->stage(folder, version("1.3")).has_value());
        QVERIFY(change->activate(version("1.3")).has_value());
        QVERIFY(change->activate(version("1.1")).has_value());
        QCOMPARE(change->activate(version("1.2")), std::nullopt);
        QVERIFY(change->activate(UpdateVersion()).has_value());
        QCOMPARE(f.seenBy("1.2").current().text(), u"1.2"_s);
        QVERIFY(!f.names().contains(u"trial"_s) && f.isComplete("1.2"));
    }

    static void neverFromNewerToOlder()
    {
        const InstallationFixture f;
        f.put("1.3");
        f.put("1.4");
        // What installing 1.4 by hand does while 1.2 runs.
        std::filesystem::remove(f.root() / "current");
        std::filesystem::create_directory_symlink("versions/1.4", f.root() / "current");
        auto change = InstallationChange::begin(f.seenBy("1.2"));
        QVERIFY(change);
        QVERIFY(change->activate(version("1.3")).has_value());
        QVERIFY(change->stage(unpacked(*change, "1.3"), version("1.3")).has_value());
        QCOMPARE(f.seenBy("1.2").current().text(), u"1.4"_s);
        QVERIFY(!f.names().contains(u"trial"_s));
    }

    static void aSecondUpdateBeforeTheFirstOneStarted()
    {
        const InstallationFixture f;
        update(f, "1.2", "1.3");
        update(f, "1.2", "1.4");
        QCOMPARE(f.seenBy("1.2").current().text(), u"1.4"_s);
        // Version 1.3 has never run, so it is nothing to go back to.
        QCOMPARE(f.seenBy("1.2").previous().text(), u"1.2"_s);
    }

    static void aStartThatSaysNothingIsTakenBack()
    {
        const InstallationFixture f;
        update(f, "1.2", "1.3");
        const auto startsAfter = [&f](const char *trial) {
            ScratchFolder::writeTo(f.root() / "trial", trial);
            auto change = InstallationChange::begin(f.seenBy("1.3"));
            return change && !change->takeBackStart() ? f.seenBy("1.3").trial().starts : -1;
        };
        QCOMPARE(startsAfter("1.3\n2\n"), 1);
        QCOMPARE(startsAfter("1.3\n1\n"), 0);
        QCOMPARE(startsAfter("1.3\n0\n"), 0);
        QCOMPARE(startsAfter("1.3\n"), 0);
        confirm(f, "1.3");
        auto change = InstallationChange::begin(f.seenBy("1.3"));
        QCOMPARE(change->takeBackStart(), std::nullopt);
        QVERIFY(!f.names().contains(u"trial"_s));
    }

    static void aFailureIsForgottenWithItsVersion()
    {
        const InstallationFixture f;
        update(f, "1.2", "1.3");
        // What the launcher does after two starts.
        std::filesystem::rename(f.root() / "previous", f.root() / "current");
        std::filesystem::rename(f.root() / "trial", f.root() / "failed");
        QCOMPARE(f.seenBy("1.2").failed().text(), u"1.3"_s);
        auto change = InstallationChange::begin(f.seenBy("1.2"));
        QVERIFY(change);
        QCOMPARE(change->forgetFailure(), std::nullopt);
        QVERIFY(!f.seenBy("1.2").failed().isValid());
        QCOMPARE(f.versions(), QStringList{u"1.2"_s});
        QCOMPARE(change->forgetFailure(), std::nullopt);
    }

    static void theRunningVersionIsNotReplaced()
    {
        const InstallationFixture f;
        f.put("1.3");
        auto change = InstallationChange::begin(f.seenBy("1.3"));
        QVERIFY(change);
        QVERIFY(change->stage(unpacked(*change, "1.3"), version("1.3")).has_value());
    }

    static void aLeftOverVersionIsReplaced()
    {
        const InstallationFixture f;
        std::filesystem::create_directories(f.root() / "versions/1.3/bin");
        ScratchFolder::writeTo(f.root() / "versions/1.3/old", "old");
        update(f, "1.2", "1.3");
        QVERIFY(f.isComplete("1.3"));
        QCOMPARE(f.versions(), (QStringList{u"1.2"_s, u"1.3"_s}));
    }

    static void leftoversAreRemoved()
    {
        const InstallationFixture f;
        std::filesystem::create_directories(f.root() / "versions/.staging-1/OrvaneBreak-1.3/bin");
        ScratchFolder::writeTo(f.root() / ".new-trial", "1.3\n0\n");
        ScratchFolder::writeTo(f.root() / "trial", "1.3\n0\n");
        std::filesystem::create_directory_symlink("versions/1.3", f.root() / ".new-current");
        QVERIFY(!f.seenBy("1.2").trial().version.isValid());
        confirm(f, "1.2");
        QCOMPARE(f.names(), (QStringList{u".lock"_s, u"current"_s, u"versions"_s}));
        QCOMPARE(f.versions(), QStringList{u"1.2"_s});
    }

    static void oneAtATime()
    {
        const InstallationFixture f;
        auto first = InstallationChange::begin(f.seenBy("1.2"));
        QVERIFY(first);
        const std::filesystem::path folder = unpacked(*first, "1.3");
        QVERIFY(!InstallationChange::begin(f.seenBy("1.2")));
        QVERIFY(std::filesystem::exists(folder));
        first.reset();
        QVERIFY(InstallationChange::begin(f.seenBy("1.2")));
        QVERIFY(!std::filesystem::exists(folder));
        // A process that dies releases the lock.
        QCOMPARE(runInChild([&] {
                     const auto change = InstallationChange::begin(f.seenBy("1.2"));
                     _exit(change ? 0 : 1);
                     return 1;
                 }),
                 0);
        QVERIFY(InstallationChange::begin(f.seenBy("1.2")));
    }

    static void noInstallationToChange()
    {
        const InstallationFixture f;
        QVERIFY(!InstallationChange::begin(Installation(f.root() / "nowhere", version("1.2"))));
    }
};

ORVANE_TEST(InstallationTest, TestProgram::NoApplication)
#include "InstallationTest.moc"
