// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/TestProgram.h"
#include "UpdaterFixture.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Answer = UpdaterDriver::Answer;

/// Updates that fail, and feeds that are refused or old.
class UpdaterFailureTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aFailureIsShownAfterAManualCheck_data()
    {
        QTest::addColumn<int>("failure");
        QTest::addColumn<QString>("message");
        QTest::newRow("signature") << static_cast<int>(UpdateFailure::NotGenuine) << u"Mise à jour refusée"_s;
        QTest::newRow("archive") << static_cast<int>(UpdateFailure::Damaged) << u"Mise à jour refusée"_s;
        QTest::newRow("disk") << static_cast<int>(UpdateFailure::Disk) << u"Installation impossible"_s;
    }

    void aFailureIsShownAfterAManualCheck()
    {
        QFETCH(const int, failure);
        QFETCH(const QString, message);
        UpdaterFixture f(true, true);
        f.start().checkForUpdates();
        f.answer(UpdaterFixture::update());
        f.driver.choice(Answer::Install);
        f.deliver();
        f.installer.finish(static_cast<UpdateFailure>(failure));
        QCOMPARE(f.driver.takeLog().last(), message);
        QCOMPARE(f.installer.log.size(), 1);
    }

    void anUnaskedFailureIsSilentAndPausesForADay()
    {
        UpdaterFixture f(true, true);
        f.start().setUpdateCheckInterval(1h);
        f.runLoop.advance(1min);
        f.answer(UpdaterFixture::update());
        f.deliver();
        f.installer.finish(UpdateFailure::NotGenuine);
        f.runLoop.advance(1h + 1min);
        f.answer(UpdaterFixture::update());
        QCOMPARE(f.downloads.requests.size(), 1);
        QCOMPARE(f.driver.takeLog(), QStringList());
    }

    void aDownloadThatFailsPausesForADay_data()
    {
        QTest::addColumn<QByteArray>("more");
        QTest::newRow("usual") << QByteArray();
        QTest::newRow("critical") << QByteArray("<s:criticalUpdate/>");
    }

    void aDownloadThatFailsPausesForADay()
    {
        QFETCH(const QByteArray, more);
        UpdaterFixture f(true, true);
        f.start().setUpdateCheckInterval(1h);
        f.runLoop.advance(1min);
        f.answer(UpdaterFixture::update("1.1", more));
        f.downloads.answer({}, Downloads::End::Refused);
        QCoreApplication::processEvents();
        f.runLoop.advance(1h + 1min);
        f.answer(UpdaterFixture::update("1.1", more));
        QCOMPARE(f.downloads.requests.size(), 1);
        f.runLoop.advance(24h);
        f.answer(UpdaterFixture::update("1.1", more));
        QCOMPARE(f.downloads.requests.size(), 2);
    }

    void aVersionThatFailedItsTrialIsTriedAgainAfterADay()
    {
        UpdaterFixture f(true, true);
        f.installer.failed = UpdateVersion(u"1.1"_s);
        f.start().setUpdateCheckInterval(1h);
        QCOMPARE(f.driver.takeLog(), QStringList());
        f.runLoop.advance(5s);
        QCOMPARE(f.driver.takeLog(), QStringList{u"Mise à jour annulée quietly"_s});
        QCOMPARE(f.driver.lastInformation,
                 u"La version 1.1 n'a pas démarré\u00a0: OrvaneBreak est revenu à la version 1.0."_s);
        f.answer(UpdaterFixture::update("1.1", "<s:criticalUpdate/>"));
        QVERIFY(f.downloads.requests.isEmpty());
        f.runLoop.advance(1h);
        f.answer(UpdaterFixture::update("1.2"));
        QCOMPARE(f.downloads.requests.size(), 1);
        // It is said once.
        f.download.cancel();
        f.start();
        f.runLoop.advance(25h);
        QCOMPARE(f.driver.takeLog(), QStringList());
        f.answer(UpdaterFixture::update());
        QCOMPARE(f.downloads.requests.size(), 2);
    }

    void theMessageAboutAFailedTrialIsNotReplaced()
    {
        UpdaterFixture f(std::nullopt);
        f.start();
        f.installer.failed = UpdateVersion(u"1.1"_s);
        f.start();
        f.runLoop.advance(5s);
        QCOMPARE(f.driver.takeLog(), QStringList{u"Mise à jour annulée quietly"_s});
        f.start();
        f.runLoop.advance(5s);
        QCOMPARE(f.driver.takeLog(), QStringList{u"permission?"_s});
    }

    void theResultWarnsAfterTwoWeeksWithoutSuccess()
    {
        UpdaterFixture f(false);
        f.start().checkForUpdates();
        f.answer({});
        QVERIFY(!f.driver.lastInformation.contains("Aucune vérification"_L1));
        f.runLoop.advance(24h * 13);
        f.updater->checkForUpdates();
        f.http.answer(std::nullopt);
        QVERIFY(!f.driver.lastInformation.contains(u"Aucune vérification"_s));
        f.runLoop.advance(24h * 2);
        f.updater->checkForUpdates();
        f.http.answer(std::nullopt);
        QVERIFY(f.driver.lastInformation.endsWith(u"Aucune vérification n'a réussi depuis le 14.11.2023."_s));
    }

    void aFeedThatIsFrozenForTwoWeeksIsReportedOnce()
    {
        UpdaterFixture f;
        f.start();
        const QByteArray old = UpdaterFixture::expiry("Mon, 20 Nov 2023 10:00:00 +0000");
        QStringList said;
        for (int day = 0; day < 32; ++day) {
            f.runLoop.advance(24h);
            while (!f.http.requests.isEmpty())
                f.answer(old);
            const QStringList log = f.driver.takeLog();
            said += log.isEmpty() ? QStringList() : QStringList(QString::number(day) + u' ' + log.join(u'|'));
        }
        QCOMPARE(said, (QStringList{u"19 Mises à jour quietly"_s}));
        QCOMPARE(f.driver.lastInformation, u"Aucune vérification n'a réussi depuis le 19.11.2023."_s);
    }

    void anOlderFeedThanSeenIsRefused()
    {
        UpdaterFixture f(true, true);
        const auto serial = [](int number) {
            return "<o:serial xmlns:o='urn:orvanebreak:feed'>" + QByteArray::number(number) + "</o:serial>";
        };
        f.start().checkForUpdates();
        f.answer(serial(8));
        const QJsonValue success = f.store.value(u"SULastSuccessTime"_s);
        QVERIFY(success.isString());
        f.runLoop.advance(1h);
        // A restart does not forget what was seen.
        f.start().checkForUpdates();
        f.driver.takeLog();
        f.answer(serial(7) + UpdaterFixture::update());
        QCOMPARE(f.driver.takeLog().last(), u"Liste des versions refusée"_s);
        QCOMPARE(f.store.value(u"SULastSuccessTime"_s), success);
        f.updater->checkForUpdates();
        f.answer(serial(8) + UpdaterFixture::update());
        QVERIFY(f.store.value(u"SULastSuccessTime"_s) != success);
        QCOMPARE(f.driver.takeLog().last(), u"offer 1.1"_s);
    }

    void aForgedFeedIsRefused()
    {
        UpdaterFixture f;
        f.readFeed = [](const QByteArray &, const Ed25519::PublicKey &, QObject &,
                        const FeedThread::Completion &completion) { completion(FeedProblem::NotGenuine); };
        f.start().checkForUpdates();
        f.answer(UpdaterFixture::update());
        QCOMPARE(f.driver.takeLog().last(), u"Liste des versions refusée"_s);
        QVERIFY(f.store.value(u"SULastSuccessTime"_s).isUndefined());
    }
};

ORVANE_TEST(UpdaterFailureTest, QCoreApplication)
#include "UpdaterFailureTest.moc"
