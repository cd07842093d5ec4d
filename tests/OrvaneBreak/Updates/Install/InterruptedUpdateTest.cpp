// SPDX-License-Identifier: GPL-3.0-or-later
#include "InstallationFixture.h"
#include "Support/SystemCalls.h"
#include "Support/TestProgram.h"

#include <functional>

using namespace Qt::StringLiterals;

namespace {

constexpr int manyCalls = 1'000;

using Failure = void (*)(int call, int failures);

/// What a process of the old version does. Returns 0, or a number that tells where it stopped.
int installUpdate(const InstallationFixture &f, const QByteArray &archive)
{
    auto change = InstallationChange::begin(f.seenBy("1.2"));
    if (!change)
        return 1;
    const auto unpacked = unpackArchive(LibarchiveReader(archive), change->newStagingFolder());
    const auto *update = std::get_if<UnpackedUpdate>(&unpacked);
    if (!update)
        return 2;
    if (change->stage(update->folder, update->version))
        return 3;
    return change->activate(update->version) ? 4 : 0;
}

/// What the first process of the new version does.
int startWell(const InstallationFixture &f)
{
    auto change = InstallationChange::begin(f.seenBy("1.3"));
    return change && !change->confirm() ? 0 : 5;
}

/// Whether the links, the trial and everything that is called a version make sense, whatever was interrupted.
void checkInstallation(const InstallationFixture &f)
{
    const Installation seen = f.seenBy("1.2");
    const QString current = seen.current().text();
    QVERIFY(current == "1.2"_L1 || current == "1.3"_L1);
    if (current == "1.3"_L1)
        QCOMPARE(seen.previous().text(), u"1.2"_s);
    else
        QVERIFY(!seen.isOnTrial());
    QVERIFY(f.versions().contains(u"1.2"_s) && f.versions().contains(current));
    for (const QString &name : f.versions())
        QVERIFY(name.startsWith(u'.') || f.isWhole(name.toStdString()));
}

/// Whether the new version, which has not started yet, is on trial if it is current.
void checkTrial(const InstallationFixture &f)
{
    const Installation seen = f.seenBy("1.3");
    QCOMPARE(seen.isOnTrial(), seen.current().text() == "1.3"_L1);
}

/// Whether the next attempts, which nobody interrupts, come to the new version and leave nothing behind.
void checkCompletion(const InstallationFixture &f, const QByteArray &archive)
{
    if (f.seenBy("1.2").current().text() == "1.2"_L1)
        QCOMPARE(installUpdate(f, archive), 0);
    QCOMPARE(startWell(f), 0);
    QCOMPARE(f.names(), (QStringList{u".lock"_s, u"current"_s, u"previous"_s, u"versions"_s}));
    QCOMPARE(f.versions(), (QStringList{u"1.2"_s, u"1.3"_s}));
    QCOMPARE(f.seenBy("1.3").current().text(), u"1.3"_s);
    QCOMPARE(f.seenBy("1.3").previous().text(), u"1.2"_s);
    QVERIFY(f.isWhole("1.2") && f.isWhole("1.3"));
}

} // namespace

class InterruptedUpdateTest : public QObject
{
    Q_OBJECT

    const QByteArray m_archive = ArchiveMaker::packedUpdate("1.3");

    /// Kills `work` before each of its calls, each time after `prepare`, and returns how many there were.
    /// A new version is on trial whenever it is current, unless `look` says what else there is to see.
    int interruptEverywhere(const std::function<void(const InstallationFixture &)> &prepare,
                            const std::function<int(const InstallationFixture &)> &work,
                            const std::function<void(const InstallationFixture &)> &look = checkTrial) const
    {
        for (int call = 1; call < manyCalls && !QTest::currentTestFailed(); ++call) {
            const InstallationFixture f;
            prepare(f);
            const int status = runInChild([&] {
                SystemCalls::killBefore(call);
                return work(f);
            });
            checkInstallation(f);
            look(f);
            checkCompletion(f, m_archive);
            if (status == 0)
                return call - 1;
            if (status != SystemCalls::killedStatus)
                qWarning("call %d, status %d", call, status);
        }
        QTest::qFail("did not come to its end", __FILE__, __LINE__);
        return 0;
    }

    /// Has `failure` begin at each of the calls of `work`, each time after `prepare`, until one comes to its
    /// end before. `look` sees what came of it: the status of `work`, or `killedStatus` when nothing failed.
    void failEverywhere(Failure failure, int failures,
                        const std::function<void(const InstallationFixture &)> &prepare,
                        const std::function<int(const InstallationFixture &)> &work,
                        const std::function<void(const InstallationFixture &, int)> &look) const
    {
        for (int call = 1;; ++call) {
            QVERIFY(call < manyCalls);
            const InstallationFixture f;
            prepare(f);
            const int status = runInChild([&] {
                failure(call, failures);
                const int result = work(f);
                return SystemCalls::count() < call ? SystemCalls::killedStatus : result;
            });
            checkInstallation(f);
            look(f, status);
            checkCompletion(f, m_archive);
            QVERIFY2(!QTest::currentTestFailed(), qPrintable(QString::number(call)));
            if (status == SystemCalls::killedStatus)
                return;
        }
    }

private Q_SLOTS:
    void killedWhileInstalling() const
    {
        const int calls =
            interruptEverywhere([](const InstallationFixture &f) { f.put("1.3"); },
                                [this](const InstallationFixture &f) { return installUpdate(f, m_archive); });
        // Each file and folder alone needs more than two calls.
        QVERIFY(calls > 30);
    }

    void killedWhileStarting() const
    {
        int trials = 0;
        const int calls = interruptEverywhere(
            [this](const InstallationFixture &f) {
                f.put("1.1");
                QCOMPARE(installUpdate(f, m_archive), 0);
            },
            startWell, [&](const InstallationFixture &f) { trials += f.seenBy("1.3").isOnTrial() ? 1 : 0; });
        QVERIFY(trials > 0 && trials < calls);
    }

    static void failingDisk_data()
    {
        QTest::addColumn<Failure>("failure");
        QTest::addColumn<int>("failures");
        QTest::newRow("stays full") << &SystemCalls::fillDiskBefore << SystemCalls::forEver;
        QTest::newRow("full for a moment") << &SystemCalls::fillDiskBefore << 1;
        QTest::newRow("stays broken") << &SystemCalls::breakDiskBefore << SystemCalls::forEver;
        QTest::newRow("broken for a moment") << &SystemCalls::breakDiskBefore << 1;
        QTest::newRow("broken for two moments") << &SystemCalls::breakDiskBefore << 2;
    }

    void failingDisk() const
    {
        QFETCH(const Failure, failure);
        QFETCH(const int, failures);
        // Where nothing can be taken away either, the next attempt does.
        const bool takesAway = failure == &SystemCalls::fillDiskBefore;
        failEverywhere(
            failure, failures, [](const InstallationFixture &) {},
            [this](const InstallationFixture &f) { return installUpdate(f, m_archive); },
            [takesAway](const InstallationFixture &f, int status) {
                const bool isSwitched = f.seenBy("1.2").current().text() == "1.3"_L1;
                QVERIFY(!isSwitched || f.seenBy("1.3").isOnTrial());
                QCOMPARE(isSwitched, status == 0 || status == SystemCalls::killedStatus);
                QVERIFY(isSwitched || !takesAway || !f.names().contains(u"trial"_s));
                // What was unpacked is gone at once, and what was staged at the next attempt.
                QVERIFY(status != 2 || !takesAway || f.versions() == QStringList{u"1.2"_s});
            });
    }

    static void diskBreaksAtTheFirstStart_data()
    {
        QTest::addColumn<int>("failures");
        QTest::newRow("stays broken") << SystemCalls::forEver;
        QTest::newRow("for a moment") << 1;
        QTest::newRow("for two moments") << 2;
    }

    void diskBreaksAtTheFirstStart() const
    {
        QFETCH(const int, failures);
        failEverywhere(
            &SystemCalls::breakDiskBefore, failures,
            [this](const InstallationFixture &f) {
                f.put("1.1");
                QCOMPARE(installUpdate(f, m_archive), 0);
            },
            startWell,
            [](const InstallationFixture &f, int status) {
                QVERIFY(status != 0 || !f.seenBy("1.3").isOnTrial());
            });
    }
};

ORVANE_TEST(InterruptedUpdateTest, TestProgram::NoApplication)
#include "InterruptedUpdateTest.moc"
