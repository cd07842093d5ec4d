// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/TestProgram.h"
#include "UpdaterFixture.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Answer = UpdaterDriver::Answer;

namespace {

const QString searching = u"Recherche de mises à jour…"_s;
const QString loading = u"Téléchargement d'OrvaneBreak 1.1…"_s;
const QString preparing = u"Vérification et installation…"_s;
const QString hidden = u"hide"_s;
const QString noFeed = u"Vérification impossible"_s;

/// Answers an automatic check with `items`.
void findAutomatically(UpdaterFixture &f, const QByteArray &items)
{
    f.runLoop.advance(25h);
    QCOMPARE(f.http.requests.size(), 1);
    f.answer(items);
}

} // namespace

class UpdaterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutAKeyOrASafeFeedOnlyAManualCheckSaysSo_data()
    {
        QTest::addColumn<QString>("feed");
        QTest::addColumn<bool>("hasKey");
        QTest::newRow("no key") << u"https://makers.invalid/a.xml"_s << false;
        QTest::newRow("no feed") << QString() << true;
        QTest::newRow("not https") << u"http://makers.invalid/a.xml"_s << true;
        QTest::newRow("a file") << u"file:///a.xml"_s << true;
    }

    void withoutAKeyOrASafeFeedOnlyAManualCheckSaysSo()
    {
        QFETCH(const QString, feed);
        QFETCH(const bool, hasKey);
        UpdaterFixture f;
        f.configuration.feed = QUrl(feed);
        if (!hasKey)
            f.configuration.key.reset();
        f.start();
        f.start();
        f.runLoop.advance(50h);
        QCOMPARE(f.driver.takeLog(), QStringList());
        f.updater->checkForUpdates();
        QCOMPARE(f.driver.takeLog(), QStringList{u"Mises à jour indisponibles"_s});
        QVERIFY(f.http.requests.isEmpty());
    }

    void aManualCheckAlwaysShowsAResult_data()
    {
        QTest::addColumn<int>("status"); // 0: no answer
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("answer");
        using FeedMaker::feed;
        const QByteArray newer = UpdaterFixture::update();
        const QString upToDate = u"OrvaneBreak est à jour"_s;
        QTest::newRow("no answer") << 0 << QByteArray() << noFeed;
        QTest::newRow("error") << 500 << feed(newer) << noFeed;
        QTest::newRow("not found") << 404 << QByteArray("<html/>") << noFeed;
        QTest::newRow("no XML") << 200 << QByteArray("hello") << noFeed;
        QTest::newRow("entities") << 200 << feed(newer, "<!DOCTYPE rss []>") << noFeed;
        QTest::newRow("empty") << 200 << feed({}) << u"Aucune version annoncée"_s;
        QTest::newRow("clock behind")
            << 200 << feed(UpdaterFixture::update("2.0", "<pubDate>Mon, 02 Mar 2037 10:00:00 GMT</pubDate>"))
            << noFeed;
        QTest::newRow("bad address")
            << 200 << feed(newer + UpdaterFixture::update("1.0")).replace("https://e", "ftp://e")
            << u"Mise à jour refusée"_s;
        QTest::newRow("other system") << 200 << feed(QByteArray(newer).replace(R"(s:os="linux")", ""))
                                      << u"Aucune version pour cet ordinateur"_s;
        QTest::newRow("expired") << 200
                                 << feed(newer + UpdaterFixture::expiry("Mon, 13 Nov 2023 10:00:00 +0000"))
                                 << u"Liste des versions périmée"_s;
        QTest::newRow("same version") << 200 << feed(UpdaterFixture::update("1.0")) << upToDate;
        QTest::newRow("older") << 200 << feed(UpdaterFixture::update("0.9")) << upToDate;
        QTest::newRow("newer system")
            << 200
            << feed(UpdaterFixture::update("2.0", "<s:minimumSystemVersion>7</s:minimumSystemVersion>"))
            << u"Ton système est trop ancien"_s;
        QTest::newRow("newer") << 200 << feed(newer) << u"offer 1.1"_s;
    }

    void aManualCheckAlwaysShowsAResult()
    {
        QFETCH(const int, status);
        QFETCH(const QByteArray, body);
        QFETCH(const QString, answer);
        UpdaterFixture f(false);
        f.start().checkForUpdates();
        f.http.answer(status == 0 ? std::nullopt : std::optional(HttpAnswer{status, body}));
        QCOMPARE(f.driver.takeLog(), (QStringList{searching, hidden, answer}));
        f.updater->checkForUpdates();
        QCOMPARE(f.http.requests.size(), 1);
    }

    void anAcceptedUpdateIsUsedFromTheNextStartOn()
    {
        UpdaterFixture f;
        f.start().checkForUpdates();
        f.answer(UpdaterFixture::update());
        f.driver.takeLog();
        f.driver.choice(Answer::Install);
        f.deliver();
        QCOMPARE(f.driver.progress, 1.0);
        QCOMPARE(f.driver.takeLog(), (QStringList{loading, preparing}));
        f.installer.finish();
        QCOMPARE(f.driver.takeLog(), (QStringList{hidden, u"relaunch 1.1?"_s}));
        f.driver.relaunch(false);
        QCOMPARE(f.relaunches, 0);
        QCOMPARE(f.installer.log, (QStringList{u"prepare 1.1 "_s + QString(1000, u'a'), u"activate 1.1"_s}));
    }

    void anAcceptedUpdateCanRestartTheProgram()
    {
        UpdaterFixture f;
        f.start().checkForUpdates();
        f.answer(UpdaterFixture::update());
        f.driver.choice(Answer::Install);
        f.deliver();
        f.installer.finish();
        f.driver.relaunch(true);
        QCOMPARE(f.relaunches, 1);
    }

    void automaticDownloadsAreSilent()
    {
        UpdaterFixture f(true, true);
        f.start();
        findAutomatically(f, UpdaterFixture::update());
        f.deliver();
        f.installer.finish();
        QCOMPARE(f.driver.takeLog(), QStringList());
        QCOMPARE(f.installer.log.last(), u"activate 1.1"_s);
    }

    void aVersionThatIsInstalledIsNotDownloadedAgain()
    {
        UpdaterFixture f(true, true);
        f.installer.installed = UpdateVersion(u"1.1"_s);
        f.start();
        findAutomatically(f, UpdaterFixture::update());
        QVERIFY(f.downloads.requests.isEmpty());
        QCOMPARE(f.installer.log, QStringList{u"activate 1.1"_s});
    }

    void anUpdateThatCannotBeUsedIsReported()
    {
        UpdaterFixture f;
        f.installer.isRefusing = true;
        f.start().checkForUpdates();
        f.answer(UpdaterFixture::update());
        f.driver.choice(Answer::Install);
        f.deliver();
        f.installer.finish();
        QCOMPARE(f.driver.takeLog().last(), u"Installation impossible"_s);
        QCOMPARE(f.relaunches, 0);
    }

    void aNewerVersionIsFoundWhileOneIsReady()
    {
        UpdaterFixture f(true, true);
        f.start();
        findAutomatically(f, UpdaterFixture::update());
        f.deliver();
        f.installer.finish();
        findAutomatically(f, UpdaterFixture::update());
        QCOMPARE(f.downloads.requests.size(), 1);
        findAutomatically(f, UpdaterFixture::update("1.2", "<s:criticalUpdate/>"));
        QCOMPARE(f.downloads.requests.size(), 2);
        f.deliver();
        f.installer.finish();
        QCOMPARE(f.installer.log.last(), u"activate 1.2"_s);
        QCOMPARE(f.driver.takeLog().last(), u"relaunch 1.2? quietly"_s);
    }

    void aVersionThatWasInstalledByHandIsNotReplacedByAnOlderOne()
    {
        UpdaterFixture f;
        f.installer.next = UpdateVersion(u"1.2"_s);
        f.start().checkForUpdates();
        f.answer(UpdaterFixture::update());
        QCOMPARE(f.driver.takeLog().last(), u"OrvaneBreak est à jour"_s);
        QCOMPARE(f.driver.lastInformation, u"La version 1.2 est la plus récente."_s);
    }

    void aReadyUpdateIsOfferedAfterADay()
    {
        UpdaterFixture f(true, true);
        f.start();
        findAutomatically(f, UpdaterFixture::update());
        f.deliver();
        f.installer.finish();
        f.runLoop.advance(23h);
        QCOMPARE(f.driver.takeLog(), QStringList());
        f.runLoop.advance(3h);
        QCOMPARE(f.driver.takeLog(), QStringList{u"relaunch 1.1? quietly"_s});
    }

    void aCriticalUpdateIsOfferedOnceReady()
    {
        UpdaterFixture f(true, true);
        f.start();
        findAutomatically(f, UpdaterFixture::update("1.1", "<s:criticalUpdate/>"));
        f.deliver();
        f.installer.finish();
        QCOMPARE(f.driver.takeLog(), QStringList{u"relaunch 1.1? quietly"_s});
    }

    void withDownloadsOffUpdatesAreOfferedQuietly()
    {
        UpdaterFixture f;
        f.start();
        findAutomatically(f, UpdaterFixture::update());
        QCOMPARE(f.driver.takeLog(), QStringList{u"offer 1.1 quietly"_s});
        // The next check does not repeat an open question.
        f.updater->setUpdateCheckInterval(1h);
        f.runLoop.advance(61min);
        f.answer(UpdaterFixture::update());
        QCOMPARE(f.driver.takeLog(), QStringList());
        f.driver.choice(Answer::Install);
        QCOMPARE(f.driver.takeLog(), QStringList{loading});
    }

    void laterPostponesTheOfferByADayUnlessCritical()
    {
        UpdaterFixture f;
        f.start().setUpdateCheckInterval(1h);
        f.runLoop.advance(1min);
        f.answer(UpdaterFixture::update());
        f.driver.choice(Answer::Later);
        f.driver.takeLog();
        f.runLoop.advance(1h + 1min);
        f.answer(UpdaterFixture::update());
        QCOMPARE(f.driver.takeLog(), QStringList());
        f.runLoop.advance(1h + 1min);
        f.answer(UpdaterFixture::update("1.1", "<s:criticalUpdate/>"));
        QCOMPARE(f.driver.takeLog(), QStringList{u"offer 1.1 quietly"_s});
        f.driver.choice(Answer::Later);
        f.runLoop.advance(25h);
        f.answer(UpdaterFixture::update());
        QCOMPARE(f.driver.takeLog(), QStringList{u"offer 1.1 quietly"_s});
    }

    void onlyAManualCheckOffersASkippedVersion()
    {
        UpdaterFixture f;
        f.start();
        findAutomatically(f, UpdaterFixture::update());
        f.driver.choice(Answer::Skip);
        f.driver.takeLog();
        findAutomatically(f, UpdaterFixture::update());
        QCOMPARE(f.driver.takeLog(), QStringList());
        findAutomatically(f, UpdaterFixture::update("1.2"));
        QCOMPARE(f.driver.takeLog(), QStringList{u"offer 1.2 quietly"_s});
        f.updater->checkForUpdates();
        f.answer(UpdaterFixture::update());
        QCOMPARE(f.driver.takeLog().last(), u"offer 1.1"_s);
    }

    void anInstallationByOthersOpensTheMakersPage_data()
    {
        QTest::addColumn<int>("ability");
        QTest::newRow("package manager") << static_cast<int>(UpdateInstaller::Ability::PackageManager);
        QTest::newRow("unpacked") << static_cast<int>(UpdateInstaller::Ability::Unpacked);
        QTest::newRow("not writable") << static_cast<int>(UpdateInstaller::Ability::NotAllowed);
    }

    void anInstallationByOthersOpensTheMakersPage()
    {
        QFETCH(const int, ability);
        UpdaterFixture f(true, true);
        f.installer.currentAbility = static_cast<UpdateInstaller::Ability>(ability);
        f.start();
        findAutomatically(f, UpdaterFixture::update());
        QCOMPARE(f.driver.takeLog(), QStringList{u"offer 1.1 elsewhere quietly"_s});
        QCOMPARE(static_cast<int>(f.driver.lastOffer.ability), ability);
        f.driver.choice(Answer::Install);
        QCOMPARE(f.visits, 1);
        QCOMPARE(f.installer.log, QStringList());
        QVERIFY(f.downloads.requests.isEmpty());
    }

    void checksAndDownloadsCanBeCancelled()
    {
        UpdaterFixture f;
        f.start().checkForUpdates();
        f.driver.cancel();
        QCOMPARE(f.driver.takeLog(), (QStringList{searching, hidden}));
        f.http.answer(HttpAnswer{200, FeedMaker::feed(UpdaterFixture::update())});
        QCOMPARE(f.driver.takeLog(), QStringList());
        f.updater->checkForUpdates();
        f.answer(UpdaterFixture::update());
        f.driver.choice(Answer::Install);
        f.driver.takeLog();
        f.driver.cancel();
        QCOMPARE(f.driver.takeLog(), QStringList{hidden});
        QCOMPARE(f.installer.log, QStringList());
    }

    void aCancelledPreparationIsNotUsed()
    {
        UpdaterFixture f;
        f.start().checkForUpdates();
        f.answer(UpdaterFixture::update());
        f.driver.choice(Answer::Install);
        f.deliver();
        f.driver.takeLog();
        f.driver.cancel();
        f.installer.finish();
        QCOMPARE(f.driver.takeLog(), QStringList{hidden});
        QCOMPARE(f.installer.log.size(), 1);
        // It can be asked for again.
        f.updater->checkForUpdates();
        QCOMPARE(f.http.requests.size(), 1);
    }

    void anOfferThatWasReplacedComesAgain()
    {
        UpdaterFixture f;
        f.start().setUpdateCheckInterval(1h);
        f.runLoop.advance(1min);
        f.answer(UpdaterFixture::update());
        f.updater->checkForUpdates();
        f.http.answer(std::nullopt);
        f.driver.takeLog();
        f.runLoop.advance(1h + 1min);
        f.answer(UpdaterFixture::update());
        QCOMPARE(f.driver.takeLog(), QStringList{u"offer 1.1 quietly"_s});
    }

    void anAnswerDuringACheckIsCarriedOut()
    {
        UpdaterFixture f;
        f.start().setUpdateCheckInterval(1h);
        f.runLoop.advance(1min);
        f.answer(UpdaterFixture::update());
        f.runLoop.advance(1h + 1min);
        f.driver.choice(Answer::Install);
        QCOMPARE(f.downloads.requests.size(), 1);
        f.answer(UpdaterFixture::update());
        QCOMPARE(f.downloads.requests.size(), 1);
    }

    void switchingDownloadsOffCancelsASilentDownload()
    {
        UpdaterFixture f(true, true);
        f.start();
        findAutomatically(f, UpdaterFixture::update());
        QCOMPARE(f.downloads.requests.size(), 1);
        f.updater->setAutomaticallyDownloadsUpdates(false);
        QVERIFY(!f.downloads.requests.constLast().isOpen());
    }

    void switchingDownloadsOffCancelsASilentInstallation()
    {
        UpdaterFixture f(true, true);
        f.start();
        findAutomatically(f, UpdaterFixture::update());
        f.deliver();
        f.updater->setAutomaticallyDownloadsUpdates(false);
        f.installer.finish();
        QCOMPARE(f.installer.log.size(), 1);
    }

    void aManualCheckJoinsARunningOne()
    {
        UpdaterFixture f(true, true);
        f.start();
        f.runLoop.advance(25h);
        f.updater->checkForUpdates();
        QCOMPARE(f.http.requests.size(), 1);
        QCOMPARE(f.driver.takeLog(), QStringList{searching});
        f.answer(UpdaterFixture::update());
        QCOMPARE(f.driver.takeLog(), (QStringList{hidden, u"offer 1.1"_s}));
    }

    void aManualCheckOffersAReadyUpdate()
    {
        UpdaterFixture f(true, true);
        f.start();
        findAutomatically(f, UpdaterFixture::update());
        f.deliver();
        f.installer.finish();
        f.updater->checkForUpdates();
        QCOMPARE(f.driver.takeLog(), QStringList{u"relaunch 1.1?"_s});
    }
};

ORVANE_TEST(UpdaterTest, QCoreApplication)
#include "UpdaterTest.moc"
