// SPDX-License-Identifier: GPL-3.0-or-later
#include "InstallationFixture.h"
#include "Support/SystemCalls.h"
#include "Support/TestProgram.h"

#include <functional>

using namespace Qt::StringLiterals;

namespace {

constexpr int manyCalls = 1'000;

using Failure = void (*)(int call, int failures);

/// The update by a process of the old version. Returns 0, or the number of the step that failed.
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

/// The confirmation by the first process of the new version.
int confirmUpdate(const InstallationFixture &f)
{
    auto change = InstallationChange::begin(f.seenBy("1.3"));
    return change && !change->confirm() ? 0 : 5;
}

/// Checks that the links, the trial and the versions are consistent, whatever was interrupted.
void checkInstallation(const InstallationFixture &f)
{
    const Installation seen = f.seenBy("1.2");
    const QString current = seen.current().text();
    QVERIFY(current == "1.2"_L1 || current == "1.3"_L1);
    if (current == "1.3"_L1)
        QCOMPARE(seen.previous().text(), u"1.2"_s);
    else
        QVERIFY(!seen.trial().version.isValid());
    QVERIFY(f.versions().contains(u"1.2"_s) && f.versions().contains(current));
    for (const QString &name : f.versions())
        QVERIFY(name.startsWith(u'.') || f.isComplete(name.toStdString()));
}

/// Checks that the new version is on trial if and only if it is current.
void checkTrial(const InstallationFixture &f)
{
    const Installation seen = f.seenBy("1.3");
    QCOMPARE(seen.trial().version.isValid(), seen.current().text() == "1.3"_L1);
}

/// Checks that uninterrupted attempts complete the update and leave nothing behind.
void checkCompletion(const InstallationFixture &f, const QByteArray &archive)
{
    if (f.seenBy("1.2").current().text() == "1.2"_L1)
        QCOMPARE(installUpdate(f, archive), 0);
    QCOMPARE(confirmUpdate(f), 0);
    QCOMPARE(f.names(), (QStringList{u".lock"_s, u"current"_s, u"previous"_s, u"versions"_s}));
    QCOMPARE(f.versions(), (QStringList{u"1.2"_s, u"1.3"_s}));
    QCOMPARE(f.seenBy("1.3").current().text(), u"1.3"_s);
    QCOMPARE(f.seenBy("1.3").previous().text(), u"1.2"_s);
    QVERIFY(f.isComplete("1.2") && f.isComplete("1.3"));
}

} // namespace

class InterruptedUpdateTest : public QObject
{
    Q_OBJECT

    const QByteArray m_archive = ArchiveMaker::packedUpdate("1.3");

    /// Kills `work` before its first system call, then before its second and so on, each time after `prepare`
    /// and followed by `look`. Returns the number of calls.
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
        QTest::qFail("did not complete", __FILE__, __LINE__);
        return 0;
    }

    /// Lets `failure` start at the first system call of `work`, then at the second and so on, each time after
    /// `prepare`. `look` gets the status of `work`, or `killedStatus` when it ended before the failure.
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
        // Every file and folder takes more than two calls.
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
            confirmUpdate,
            [&](const InstallationFixture &f) {
                trials += f.seenBy("1.3").trial().version.isValid() ? 1 : 0;
            });
        QVERIFY(trials > 0 && trials < calls);
    }

    static void failingDisk_data()
    {
        QTest::addColumn<Failure>("failure");
        QTest::addColumn<int>("failures");
        QTest::newRow("disk full") << &SystemCalls::fillDiskBefore << SystemCalls::forEver;
        QTest::newRow("one full-disk error") << &SystemCalls::fillDiskBefore << 1;
        QTest::newRow("disk broken") << &SystemCalls::breakDiskBefore << SystemCalls::forEver;
        QTest::newRow("one I/O error") << &SystemCalls::breakDiskBefore << 1;
        QTest::newRow("two I/O errors") << &SystemCalls::breakDiskBefore << 2;
    }

    void failingDisk() const
    {
        QFETCH(const Failure, failure);
        QFETCH(const int, failures);
        // Removing fails too on a broken disk; the next attempt removes the leftovers.
        const bool removesLeftovers = failure == &SystemCalls::fillDiskBefore;
        failEverywhere(
            failure, failures, [](const InstallationFixture &) {},
            [this](const InstallationFixture &f) { return installUpdate(f, m_archive); },
            [removesLeftovers](const InstallationFixture &f, int status) {
                const bool isSwitched = f.seenBy("1.2").current().text() == "1.3"_L1;
                QVERIFY(!isSwitched || f.seenBy("1.3").trial().version.isValid());
                QCOMPARE(isSwitched, status == 0 || status == SystemCalls::killedStatus);
                QVERIFY(isSwitched || !removesLeftovers || !f.names().contains(u"trial"_s));
                // An unpacked folder is removed at once, a staged one by the next attempt.
                QVERIFY(status != 2 || !removesLeftovers || f.versions() == QStringList{u"1.2"_s});
            });
    }

    static void diskBreaksAtTheFirstStart_data()
    {
        QTest::addColumn<int>("failures");
        QTest::newRow("disk broken") << SystemCalls::forEver;
        QTest::newRow("one I/O error") << 1;
        QTest::newRow("two I/O errors") << 2;
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
            confirmUpdate,
            [](const InstallationFixture &f, int status) {
                QVERIFY(status != 0 || !f.seenBy("1.3").trial().version.isValid());
            });
    }
};

ORVANE_TEST(InterruptedUpdateTest, TestProgram::NoApplication)
#include "InterruptedUpdateTest.moc"
