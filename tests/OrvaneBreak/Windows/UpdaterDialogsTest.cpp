// SPDX-License-Identifier: GPL-3.0-or-later
#include "Alert.h"
#include "Support/ApplicationFixture.h"
#include "Support/FeedMaker.h"
#include "Support/TestProgram.h"

#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qint64 archiveLength = 1000;

struct Fixture : ApplicationFixture
{
    explicit Fixture(const QJsonObject &settings = {})
        : ApplicationFixture({QUrl(u"https://makers.invalid/appcast.xml"_s), Ed25519::PublicKey{1},
                              UpdateVersion(u"1.0"_s), u"x86_64"_s, UpdateVersion(u"6.1"_s)},
                             settings)
    {
        launch();
        http.requests.clear();
    }

    void answer(const QByteArray &more = {})
    {
        http.answer(HttpAnswer{200, FeedMaker::feed(FeedMaker::item("<s:version>1.1</s:version>" + more +
                                                                    FeedMaker::enclosure()))});
    }

    /// The dialog of this name that is open, or null.
    [[nodiscard]] static Alert *dialog(const QString &name)
    {
        for (QWidget *candidate : QApplication::topLevelWidgets()) {
            if (candidate->objectName() == name && candidate->isVisible())
                return qobject_cast<Alert *>(candidate);
        }
        return nullptr;
    }

    static void press(const QString &dialogName, const QString &title)
    {
        const QList<QPushButton *> buttons = dialog(dialogName)->findChildren<QPushButton *>();
        for (QPushButton *button : buttons) {
            if (button->text() == title)
                button->click();
        }
        QCoreApplication::processEvents();
    }
};

} // namespace

class UpdaterDialogsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setWindowIcon(QPixmap(64, 64)); }

    void theOfferSaysWhoInstallsTheUpdate_data()
    {
        QTest::addColumn<UpdateInstaller::Ability>("ability");
        QTest::addColumn<QString>("ending");
        // As plain text, no-break spaces are spaces.
        QTest::newRow("package manager") << UpdateInstaller::Ability::PackageManager
                                         << u"par un autre programme, qui doit le mettre à jour."_s;
        QTest::newRow("unpacked") << UpdateInstaller::Ability::Unpacked
                                  << u"lance son fichier « install »."_s;
        QTest::newRow("not writable") << UpdateInstaller::Ability::NotAllowed
                                      << u"ne peut pas écrire dans son dossier : installe-la à la main."_s;
    }

    void theOfferSaysWhoInstallsTheUpdate()
    {
        QFETCH(const UpdateInstaller::Ability, ability);
        QFETCH(const QString, ending);
        Fixture f;
        f.installer.currentAbility = ability;
        f.find<QPushButton>(u"updatesButton"_s)->click();
        f.answer();
        const Alert *offer = Fixture::dialog(u"updateOffer"_s);
        QVERIFY(offer);
        const QString text = offer->findChild<QTextEdit *>(u"alertInformation"_s)->toPlainText();
        QVERIFY2(text.endsWith(ending), qPrintable(text));
    }

    void anUpdateForOtherSystemsIsNotOffered()
    {
        Fixture f;
        f.find<QPushButton>(u"updatesButton"_s)->click();
        const QByteArray item = FeedMaker::wholeItem("1.1").replace(R"(s:os="linux")", R"(s:os="other")");
        f.http.answer(HttpAnswer{200, FeedMaker::feed(item)});
        const Alert *answer = Fixture::dialog(u"updateAnswer"_s);
        QVERIFY(answer);
        QCOMPARE(answer->findChild<QTextEdit *>(u"alertInformation"_s)->toPlainText(),
                 u"Aucune version n'est proposée pour ce système. Tu as la version 1.0."_s);
    }

    void anUpdateFromTheFirstClickToTheRestart()
    {
        Fixture f;
        f.find<QPushButton>(u"updatesButton"_s)->click();
        QVERIFY(Fixture::dialog(u"updateProgress"_s));
        QVERIFY(Fixture::dialog(u"updateProgress"_s)->isModal());
        f.answer("<description>Plus calme &lt;b&gt;encore&lt;/b&gt;</description>");
        QVERIFY(!Fixture::dialog(u"updateProgress"_s));
        const Alert *offer = Fixture::dialog(u"updateOffer"_s);
        QVERIFY(offer);
        const auto *text = offer->findChild<QTextEdit *>(u"alertInformation"_s);
        QVERIFY(
            text->toPlainText().startsWith(u"La version 1.1 est disponible\u202f; tu as la version 1.0."_s));
        QVERIFY(text->toPlainText().endsWith(u"Plus calme <b>encore</b>"_s));
        Fixture::press(u"updateOffer"_s, u"Installer"_s);
        const auto *bar = Fixture::dialog(u"updateProgress"_s)->findChild<QProgressBar *>();
        QCOMPARE(bar->maximum(), 0);
        f.downloads.begin(0);
        f.downloads.send(QByteArray(archiveLength / 4, 'a'));
        QCOMPARE(bar->value() * 4, bar->maximum());
        f.downloads.send(QByteArray(archiveLength - archiveLength / 4, 'a'));
        f.downloads.end(Downloads::End::Complete);
        QCoreApplication::processEvents();
        f.installer.finish();
        QCoreApplication::processEvents();
        Fixture::press(u"updateReady"_s, u"Installer et relancer"_s);
        QCOMPARE(f.relaunches, 1);
        QCOMPARE(f.installer.log.last(), u"activate 1.1"_s);
    }

    void anUnrequestedDialogNeitherBlocksNorTakesTheFocus()
    {
        Fixture f({{u"SUEnableAutomaticChecks"_s, true}});
        f.runLoop.advance(4s);
        f.answer();
        const Alert *offer = Fixture::dialog(u"updateOffer"_s);
        QVERIFY(offer && !offer->isModal() && offer->testAttribute(Qt::WA_ShowWithoutActivating));
        QVERIFY(!f.presence.log.contains(u"front updateOffer"_s));
        f.find<QPushButton>(u"reportButton"_s)->click();
        QVERIFY(QApplication::activeModalWidget());
        QApplication::activeModalWidget()->close();
        QCoreApplication::processEvents();
        Fixture::press(u"updateOffer"_s, u"Ignorer cette version"_s);
        QCOMPARE(f.updaterSettings.text(u"SUSkippedVersion"_s), u"1.1"_s);
    }

    void anUnrequestedDialogDoesNotKeepTheProgramRunning()
    {
        Fixture f({{u"SUEnableAutomaticChecks"_s, true}});
        f.runLoop.advance(4s);
        f.answer();
        QVERIFY(Fixture::dialog(u"updateOffer"_s));
        QTimer::singleShot(0, Fixture::window(), &QWidget::close);
        // Returns when the last window that keeps the program running is closed.
        QCOMPARE(QApplication::exec(), 0);
    }

    void anUnrequestedDialogWaitsForABreakAndForAnotherDialog()
    {
        Fixture f({{u"SUEnableAutomaticChecks"_s, true}});
        f.engine.breakNow();
        f.runLoop.advance(4s);
        f.answer();
        QVERIFY(!Fixture::dialog(u"updateOffer"_s));
        f.find<QPushButton>(u"reportButton"_s)->click();
        f.runLoop.advance(30s);
        QCoreApplication::processEvents();
        QVERIFY(Fixture::dialog(u"updateOffer"_s));
    }

    void aCriticalVersionCannotBeSkipped()
    {
        Fixture f;
        f.find<QPushButton>(u"updatesButton"_s)->click();
        f.answer("<s:criticalUpdate/>");
        QStringList titles;
        for (const QPushButton *button : Fixture::dialog(u"updateOffer"_s)->findChildren<QPushButton *>())
            titles += button->text();
        QVERIFY2(titles.contains(u"Installer"_s) && !titles.contains(u"Ignorer cette version"_s),
                 qPrintable(titles.join(u'|')));
    }

    void permissionIsAskedForInFrontAfterABreak()
    {
        Fixture f({{u"SUHasLaunchedBefore"_s, true}});
        f.engine.breakNow();
        f.runLoop.advance(4s);
        QVERIFY(!Fixture::dialog(u"updatePermission"_s));
        f.runLoop.advance(30s);
        QCoreApplication::processEvents();
        QVERIFY(Fixture::dialog(u"updatePermission"_s)->isModal());
        QCOMPARE(f.presence.log.last(), u"front updatePermission"_s);
    }

    void permissionIsAskedForAtTheSecondStart()
    {
        Fixture f({{u"SUHasLaunchedBefore"_s, true}});
        f.runLoop.advance(4s);
        QVERIFY(Fixture::dialog(u"updatePermission"_s));
        Fixture::press(u"updatePermission"_s, u"Rechercher automatiquement"_s);
        QVERIFY(f.updaterController.updater().automaticallyChecksForUpdates());
        QVERIFY(!Fixture::dialog(u"updatePermission"_s));
    }

    void closingTheQuestionMeansNo()
    {
        Fixture f({{u"SUHasLaunchedBefore"_s, true}});
        f.runLoop.advance(4s);
        Fixture::dialog(u"updatePermission"_s)->close();
        QCOMPARE(f.updaterSettings.boolean(u"SUEnableAutomaticChecks"_s), false);
    }

    void aRequestReplacesAnUnansweredDialog()
    {
        Fixture f({{u"SUEnableAutomaticChecks"_s, true}});
        f.runLoop.advance(4s);
        f.answer();
        QVERIFY(Fixture::dialog(u"updateOffer"_s));
        f.find<QPushButton>(u"updatesButton"_s)->click();
        QCoreApplication::processEvents();
        QVERIFY(!Fixture::dialog(u"updateOffer"_s));
        QVERIFY(Fixture::dialog(u"updateProgress"_s));
        f.answer();
        QCoreApplication::processEvents();
        QVERIFY(Fixture::dialog(u"updateOffer"_s)->isModal());
        QVERIFY(f.updaterSettings.value(u"SURemindTime"_s).isUndefined());
    }

    void cancellingEndsTheCheck()
    {
        Fixture f;
        f.find<QPushButton>(u"updatesButton"_s)->click();
        Fixture::press(u"updateProgress"_s, u"Annuler"_s);
        QVERIFY(!Fixture::dialog(u"updateProgress"_s));
        f.answer();
        QVERIFY(!Fixture::dialog(u"updateOffer"_s));
    }

    void withoutAServerTheUserIsTold()
    {
        ApplicationFixture f;
        f.launch();
        f.find<QPushButton>(u"updatesButton"_s)->click();
        const Alert *answer = Fixture::dialog(u"updateAnswer"_s);
        QVERIFY(answer);
        QCOMPARE(answer->findChild<QLabel *>(u"alertMessage"_s)->text(), u"Mises à jour indisponibles"_s);
    }
};

ORVANE_TEST(UpdaterDialogsTest, QApplication)
#include "UpdaterDialogsTest.moc"
