// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/TestProgram.h"
#include "UpdaterFixture.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Answers every check within `time` with an empty feed; returns their number.
int checksIn(UpdaterFixture &f, Interval time)
{
    int checks = 0;
    for (Interval passed = 0s; passed < time; passed += 1min) {
        f.runLoop.advance(1min);
        for (; !f.http.requests.isEmpty(); ++checks)
            f.answer({});
    }
    return checks;
}

} // namespace

class UpdaterScheduleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstCheckWaitsUntilTheProgramHasStarted()
    {
        UpdaterFixture f;
        f.start();
        QVERIFY(f.http.requests.isEmpty());
        f.runLoop.advance(4s);
        QCOMPARE(f.http.requests.size(), 1);
        QCOMPARE(f.http.requests.first().url, QUrl(u"https://makers.invalid/appcast.xml"_s));
        QVERIFY(f.driver.log.isEmpty());
    }

    void checksFollowTheInterval()
    {
        UpdaterFixture f;
        f.start().setUpdateCheckInterval(1h);
        QCOMPARE(checksIn(f, 4h + 30min), 5);
    }

    void theDefaultIntervalIsOneDay()
    {
        UpdaterFixture f;
        f.start();
        QCOMPARE(f.updater->updateCheckInterval(), 24h);
        QCOMPARE(checksIn(f, 50h), 3);
    }

    void invalidIntervalsAreLimited_data()
    {
        QTest::addColumn<QJsonValue>("stored");
        QTest::addColumn<qint64>("seconds");
        QTest::newRow("negative") << QJsonValue(-5) << 86'400LL;
        QTest::newRow("text") << QJsonValue(u"soon"_s) << 86'400LL;
        QTest::newRow("one second") << QJsonValue(1) << 60LL;
        QTest::newRow("millennia") << QJsonValue(9'000'000'000'000'000LL) << 100LL * 365 * 86'400;
    }

    void invalidIntervalsAreLimited()
    {
        QFETCH(const QJsonValue, stored);
        QFETCH(const qint64, seconds);
        UpdaterFixture f;
        f.store.setValue(u"SUScheduledCheckInterval"_s, stored);
        QCOMPARE(f.start().updateCheckInterval(), std::chrono::seconds(seconds));
    }

    void aRestartKeepsTheInterval()
    {
        UpdaterFixture f;
        f.start().setUpdateCheckInterval(1h);
        QCOMPARE(checksIn(f, 10min), 1);
        f.start().setUpdateCheckInterval(1h);
        QCOMPARE(checksIn(f, 45min), 0);
        QCOMPARE(checksIn(f, 10min), 1);
    }

    void anOverdueCheckRunsAtOnce()
    {
        UpdaterFixture f;
        f.start().setUpdateCheckInterval(1h);
        QCOMPARE(checksIn(f, 10min), 1);
        f.updater.reset();
        f.runLoop.advance(5h);
        f.start().setUpdateCheckInterval(1h);
        f.runLoop.advance(4s);
        QCOMPARE(f.http.requests.size(), 1);
    }

    void suspendedTimeCounts()
    {
        UpdaterFixture f;
        f.start().setUpdateCheckInterval(1h);
        QCOMPARE(checksIn(f, 10min), 1);
        f.runLoop.jump(8h);
        QCOMPARE(f.http.requests.size(), 1);
        f.answer({});
        QCOMPARE(checksIn(f, 2h + 30min), 2);
    }

    void aClockSetBackDelaysChecksByOneIntervalAtMost()
    {
        UpdaterFixture f;
        f.start().setUpdateCheckInterval(1h);
        QCOMPARE(checksIn(f, 10min), 1);
        f.runLoop.jump(-48h);
        QCOMPARE(checksIn(f, 65min), 1);
        f.runLoop.jump(-48h);
        // For the next start, the last check is in the future.
        f.start().setUpdateCheckInterval(1h);
        QCOMPARE(checksIn(f, 5min), 1);
    }

    void nothingRunsWithChecksOff()
    {
        UpdaterFixture f(false);
        f.start().setUpdateCheckInterval(1h);
        QVERIFY(f.runLoop.timers().empty());
        QCOMPARE(checksIn(f, 3h), 0);
        f.updater->setAutomaticallyChecksForUpdates(true);
        QCOMPARE(checksIn(f, 5min), 1);
        f.updater->setAutomaticallyChecksForUpdates(false);
        QCOMPARE(checksIn(f, 3h), 0);
    }

    void aFailedCheckWaitsForTheNextInterval()
    {
        UpdaterFixture f;
        f.start().setUpdateCheckInterval(1h);
        f.runLoop.advance(4s);
        f.http.answer(std::nullopt);
        QCOMPARE(checksIn(f, 50min), 0);
        QCOMPARE(checksIn(f, 15min), 1);
        QVERIFY(f.driver.log.isEmpty());
    }

    void aManualCheckRestartsTheInterval()
    {
        UpdaterFixture f;
        f.start().setUpdateCheckInterval(1h);
        QCOMPARE(checksIn(f, 30min), 1);
        f.updater->checkForUpdates();
        f.answer({});
        QCOMPARE(checksIn(f, 50min), 0);
        QCOMPARE(checksIn(f, 15min), 1);
    }

    void permissionIsAskedForOnceAtTheSecondStart()
    {
        UpdaterFixture f(std::nullopt);
        f.start();
        QCOMPARE(f.driver.takeLog(), QStringList());
        f.start();
        // Before the windows are up, the question would end up behind them.
        QCOMPARE(f.driver.takeLog(), QStringList());
        f.runLoop.advance(4s);
        QCOMPARE(f.driver.takeLog(), QStringList{u"permission?"_s});
        QCOMPARE(checksIn(f, 30h), 0);
        f.driver.permission(true);
        QVERIFY(f.updater->automaticallyChecksForUpdates());
        QVERIFY(!f.updater->automaticallyDownloadsUpdates());
        QCOMPARE(checksIn(f, 5min), 1);
        f.start();
        f.runLoop.advance(4s);
        QCOMPARE(f.driver.takeLog(), QStringList());
    }

    void aRefusalIsRemembered()
    {
        UpdaterFixture f(std::nullopt);
        f.start();
        f.start();
        f.runLoop.advance(4s);
        f.driver.permission(false);
        f.driver.takeLog();
        f.start();
        f.runLoop.advance(4s);
        QCOMPARE(f.driver.takeLog(), QStringList());
        QCOMPARE(f.updater->automaticallyChecksForUpdates(), false);
    }

    void aDecisionInTheSettingsReplacesTheQuestion()
    {
        UpdaterFixture f(std::nullopt);
        f.start();
        f.start().setAutomaticallyChecksForUpdates(false);
        f.runLoop.advance(4s);
        QCOMPARE(f.driver.takeLog(), QStringList());
    }

    void anAnswerAfterDestructionIsIgnored()
    {
        UpdaterFixture f(std::nullopt);
        f.start();
        f.start();
        f.runLoop.advance(4s);
        f.updater.reset();
        f.driver.permission(true);
        QVERIFY(f.store.value(u"SUEnableAutomaticChecks"_s).isUndefined());
    }

    void theTrialEndsAfterTenSeconds()
    {
        UpdaterFixture f;
        f.installer.isTrying = true;
        f.start();
        f.runLoop.advance(9s);
        QCOMPARE(f.installer.log, QStringList());
        f.runLoop.advance(11s);
        QCOMPARE(f.installer.log, QStringList{u"confirm"_s});
    }

    void quittingEndsTheTrial()
    {
        UpdaterFixture f;
        f.installer.isTrying = true;
        f.start().confirmAtQuit();
        QCOMPARE(f.installer.log, QStringList{u"confirm"_s});
    }
};

ORVANE_TEST(UpdaterScheduleTest, QCoreApplication)
#include "UpdaterScheduleTest.moc"
