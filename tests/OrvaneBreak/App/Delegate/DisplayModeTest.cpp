// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/ApplicationFixture.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class DisplayModeTest : public QObject
{
    Q_OBJECT

    /// Calls `action` with the first-launch question as soon as it is shown.
    template <typename Action>
    static void whenAsked(Action action)
    {
        QTimer::singleShot(0, qApp, [action] {
            auto *question = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!question)
                qFatal("the question is not shown");
            action(*question);
        });
    }

    static void answer(const QString &title)
    {
        whenAsked([title](QMessageBox &question) {
            for (QAbstractButton *button : question.buttons()) {
                if (button->text() == title)
                    button->click();
            }
        });
    }

    struct FirstLaunch : ApplicationFixture
    {
        FirstLaunch() { preferences.stored = {}; }
    };

private Q_SLOTS:
    void initTestCase() { QApplication::setWindowIcon(QPixmap(64, 64)); }
    void init() { failOnUnexpectedWarnings(); }

    void dockModeShowsTheWindowAndNoTrayIcon()
    {
        ApplicationFixture f;
        f.launch();
        QVERIFY(f.window()->isVisible());
        QCOMPARE(f.tray.itemsEverMade, 0);
        QVERIFY(!f.presence.isAccessory);
        QVERIFY(f.delegate.applicationShouldTerminateAfterLastWindowClosed());
    }

    void showingTheWindowBeforeTheLaunchDoesNothing()
    {
        ApplicationFixture f;
        f.delegate.showMainWindow();
        QVERIFY(f.presence.log.isEmpty());
        QVERIFY(!f.window());
    }

    void invisibleWorkIsDeferredUntilTheWindowIsShown()
    {
        ApplicationFixture f;
        f.delegate.applicationDidFinishLaunching();
        QVERIFY(f.window()->isVisible());
        QVERIFY(f.http.requests.isEmpty());
        QVERIFY(!f.window()->findChild<QWidget *>(u"settingsView"_s));
        f.runLoop.advance(1s);
        QCOMPARE(f.http.requests.size(), 1);
        QVERIFY(f.find<QWidget>(u"settingsView"_s)->isHidden());
    }

    void theSettingsPageIsBuiltEarlyOnRequest()
    {
        ApplicationFixture f;
        f.delegate.applicationDidFinishLaunching();
        f.delegate.showSettings();
        const auto *page = f.find<QWidget>(u"settingsView"_s);
        QVERIFY(page->isVisible());
        f.runLoop.advance(1s);
        QCOMPARE(f.find<QWidget>(u"settingsView"_s), page);
        QVERIFY(page->isVisible());
    }

    void menuBarModeHidesTheWindowBehindTheEye()
    {
        ApplicationFixture f;
        f.preferences.setValue(u"OBMenuBarMode"_s, true);
        f.launch();
        QVERIFY(!f.window()->isVisible());
        QCOMPARE(f.tray.items, 1);
        QCOMPARE(f.tray.symbol, u"eye"_s);
        // The crash reporter is first, and accessory mode is set before any window can appear in the task
        // bar.
        QCOMPARE(f.presence.log, (QStringList{u"crash reporter"_s, u"accessory"_s}));
        QVERIFY(!f.delegate.applicationShouldTerminateAfterLastWindowClosed());
    }

    void withoutATrayTheWindowStandsInForTheEye()
    {
        ApplicationFixture f;
        f.preferences.setValue(u"OBMenuBarMode"_s, true);
        f.tray.isHosted = false;
        f.launch();
        QVERIFY(!f.window()->isVisible());
        QVERIFY(f.presence.isAccessory);
        f.presence.log.clear();
        f.runLoop.advance(10s);
        QVERIFY(f.window()->isVisible());
        // In the task bar, and without a request for the keyboard.
        QCOMPARE(f.presence.log, QStringList{u"regular"_s});
        const auto *note = f.find<QLabel>(u"note"_s);
        QVERIFY(note->isVisible());
        QCOMPARE(note->text(), u"Ce bureau n'affiche pas l'œil\u00a0: cette fenêtre le remplace."_s);
        QVERIFY(note->sizeHint().width() <= note->width());

        f.window()->close();
        QVERIFY(f.window()->isVisible() && f.window()->isMinimized());
    }

    void aLateTrayTakesOver()
    {
        ApplicationFixture f;
        f.preferences.setValue(u"OBMenuBarMode"_s, true);
        f.tray.isHosted = false;
        f.launch();
        f.runLoop.advance(10s);
        f.tray.host();
        QVERIFY(!f.window()->isVisible());
        QVERIFY(f.presence.isAccessory);

        f.tray.lose();
        f.runLoop.advance(10s);
        QVERIFY(!f.presence.isAccessory);
        f.delegate.showMainWindow();
        QVERIFY(QTest::qWaitForWindowActive(f.window()));
        f.tray.host();
        QVERIFY2(f.window()->isVisible(), "a window that the user has been in stays");
        QVERIFY(f.find<QLabel>(u"note"_s)->isHidden());
        QVERIFY(f.presence.isAccessory);
    }

    void withoutATrayAnOpenWindowGetsTheNoteAfterASwitch()
    {
        ApplicationFixture f;
        f.tray.isHosted = false;
        f.launch();
        auto *box = f.find<QCheckBox>(u"menuBarCheckbox"_s);
        box->click();
        QVERIFY(f.presence.isAccessory);
        f.runLoop.advance(10s);
        QVERIFY(!f.presence.isAccessory);
        QVERIFY(!f.find<QLabel>(u"note"_s)->isHidden());
        box->click();
        QVERIFY(f.find<QLabel>(u"note"_s)->isHidden());
        f.window()->close();
        QVERIFY(!f.window()->isVisible());
    }

    void withoutATrayTheAnswerToTheQuestionLeavesAWindow()
    {
        FirstLaunch f;
        f.tray.isHosted = false;
        answer(u"Dans la barre de menus"_s);
        f.launch();
        f.window()->close();
        QVERIFY(!f.window()->isVisible());
        f.runLoop.advance(10s);
        QVERIFY(f.window()->isVisible());
        QVERIFY(!f.presence.isAccessory);
    }

    void afterTheTrayIsLostTheWindowIsShown()
    {
        ApplicationFixture f;
        f.preferences.setValue(u"OBMenuBarMode"_s, true);
        f.launch();
        f.engine.breakNow();
        f.tray.lose();
        f.runLoop.advance(19s);
        QVERIFY(f.engine.isOnBreak());
        QVERIFY(!f.window()->isVisible());
        f.runLoop.advance(7s);
        QVERIFY(f.window()->isVisible());
    }

    void withATrayTheWindowStaysHidden()
    {
        ApplicationFixture f;
        f.preferences.setValue(u"OBMenuBarMode"_s, true);
        f.launch();
        f.runLoop.advance(1min);
        QVERIFY(!f.window()->isVisible());
    }

    void firstLaunchAsksOnce()
    {
        FirstLaunch f;
        bool isStoredWhileAsking = false;
        whenAsked([&](QMessageBox &question) {
            isStoredWhileAsking = f.preferences.boolean(u"OBOnboarded"_s).value_or(false);
            QCOMPARE(question.text(), u"Bienvenue dans OrvaneBreak 👁"_s);
            QCOMPARE(question.informativeText(),
                     u"Où veux-tu que l'app vive ?\n\n"
                     "Dans le Dock : une app classique avec sa fenêtre.\n"
                     "Dans la barre de menus : un petit oeil discret en haut de l'écran, toujours à portée "
                     "de clic.\n\n"
                     "Tu pourras changer d'avis à tout moment dans la fenêtre de l'app."_s);
            QCOMPARE(question.textFormat(), Qt::PlainText);
            QCOMPARE(question.defaultButton()->text(), u"Dans le Dock"_s);
            QVERIFY(f.window()->isVisible());
            question.defaultButton()->click();
        });
        f.launch();
        QVERIFY(isStoredWhileAsking);
        QCOMPARE(f.preferences.stored.value("OBMenuBarMode"_L1), QJsonValue(false));

        ApplicationFixture second;
        second.preferences.stored = f.preferences.stored;
        second.launch();
        QVERIFY(!QApplication::activeModalWidget());
    }

    void answeringMenuBarSwitchesAtOnceAndLeavesTheWindowOpen()
    {
        FirstLaunch f;
        answer(u"Dans la barre de menus"_s);
        f.launch();
        QCOMPARE(f.preferences.stored.value("OBMenuBarMode"_L1), QJsonValue(true));
        QVERIFY(f.presence.isAccessory);
        QCOMPARE(f.tray.items, 1);
        QVERIFY(f.window()->isVisible());
        QVERIFY(f.find<QCheckBox>(u"menuBarCheckbox"_s)->isChecked());
    }

    /// Where the desktop shows the menu bar, settings can be opened while the question is open.
    void settingsOpenedMeanwhileFollowTheAnswer()
    {
        FirstLaunch f;
        whenAsked([&f](const QMessageBox &) { f.delegate.showSettings(); });
        answer(u"Dans la barre de menus"_s);
        f.launch();
        QVERIFY(f.find<QCheckBox>(u"menuBarCheckbox"_s)->isChecked());
    }

    void escapeAndTheCloseButtonMeanTheDock()
    {
        FirstLaunch escape;
        whenAsked([](QMessageBox &question) { QTest::keyClick(&question, Qt::Key_Escape); });
        escape.launch();
        QCOMPARE(escape.preferences.stored.value("OBMenuBarMode"_L1), QJsonValue(false));

        FirstLaunch closed;
        whenAsked([](QMessageBox &question) { question.close(); });
        closed.launch();
        QCOMPARE(closed.preferences.stored.value("OBMenuBarMode"_L1), QJsonValue(false));
        QCOMPARE(closed.tray.itemsEverMade, 0);
    }

    void endingDuringTheQuestionStoresNoAnswer()
    {
        FirstLaunch f;
        QTimer::singleShot(0, &f.delegate, [&f] { f.delegate.applicationDidFinishLaunching(); });
        whenAsked([&f](const QMessageBox &) { f.delegate.terminate(); });
        QApplication::exec();
        QVERIFY(!f.preferences.stored.contains(u"OBMenuBarMode"_s));
    }

    void aLaunchInTheMenuBarShowsNoWindow()
    {
        ApplicationFixture f;
        f.preferences.setValue(u"OBMenuBarMode"_s, true);
        f.launch();
        f.delegate.showLaunchedWindow();
        QVERIFY(!f.window()->isVisible());
        f.delegate.showMainWindow();
        QVERIFY(f.window()->isVisible());
    }

    void switchingToTheMenuBarWhileRemindersAreOn()
    {
        ApplicationFixture f;
        f.launch();
        f.engine.start();
        f.find<QCheckBox>(u"menuBarCheckbox"_s)->click();
        QCOMPARE(f.tray.items, 1);
        QCOMPARE(f.tray.symbol, u"eye.fill"_s);
        QVERIFY(f.tray.tint);
        QVERIFY(f.window()->isVisible());
    }

    void switchingToTheDockBringsTheWindowForwardOnItsPage()
    {
        ApplicationFixture f;
        f.preferences.setValue(u"OBMenuBarMode"_s, true);
        f.launch();
        f.delegate.showSettings();
        f.presence.log.clear();
        f.find<QCheckBox>(u"menuBarCheckbox"_s)->click();
        QCOMPARE(f.tray.items, 0);
        QCOMPARE(f.presence.log, QStringList{u"regular"_s});
        QTRY_VERIFY(f.window()->isVisible());
        // The first activation skips the hidden window; the second reaches it once it is shown.
        QCOMPARE(f.presence.log, (QStringList{u"regular"_s, u"front mainWindow"_s, u"front mainWindow"_s}));
        QVERIFY(f.find<QWidget>(u"settingsView"_s)->isVisible());
    }

    void closingInTheDockQuits()
    {
        ApplicationFixture f;
        f.launch();
        QSignalSpy aboutToQuit(qApp, &QCoreApplication::aboutToQuit);
        QTimer::singleShot(0, f.window(), &QWidget::close);
        QCOMPARE(QApplication::exec(), 0);
        QCOMPARE(aboutToQuit.count(), 1);
    }

    void closingInTheDockDuringABreakQuits()
    {
        ApplicationFixture f;
        f.launch();
        f.engine.breakNow();
        QTimer::singleShot(0, f.window(), &QWidget::close);
        QCOMPARE(QApplication::exec(), 0);
        f.delegate.applicationWillTerminate();
        QVERIFY(!f.engine.isOnBreak());
        QVERIFY(!f.overlay->isShown);
    }

    void closingInTheDockWithAnotherWindowOpenDoesNotQuit()
    {
        ApplicationFixture f;
        f.launch();
        f.delegate.showMessages();
        QTimer::singleShot(0, f.window(), &QWidget::close);
        QTimer::singleShot(50, qApp, [] { QCoreApplication::exit(7); });
        QCOMPARE(QApplication::exec(), 7);
        QTimer::singleShot(0, f.window(u"messagesWindow"_s), &QWidget::close);
        QCOMPARE(QApplication::exec(), 0);
    }

    void closingInTheMenuBarHidesTheSameWindow()
    {
        ApplicationFixture f;
        f.preferences.setValue(u"OBMenuBarMode"_s, true);
        f.launch();
        f.delegate.showMainWindow();
        f.delegate.showSettings();
        const QWidget *window = f.window();
        QTimer::singleShot(0, f.window(), &QWidget::close);
        QTimer::singleShot(50, qApp, [] { QCoreApplication::exit(7); });
        QCOMPARE(QApplication::exec(), 7);
        QVERIFY(!window->isVisible());
        f.tray.choose(u"Ouvrir OrvaneBreak…"_s);
        QCOMPARE(f.window(), window);
        QVERIFY(window->isVisible());
        QVERIFY(f.find<QWidget>(u"settingsView"_s)->isVisible());
    }

    void quittingDuringABreakUncoversTheScreens()
    {
        ApplicationFixture f;
        f.launch();
        f.engine.start();
        f.engine.breakNow();
        f.delegate.applicationWillTerminate();
        QVERIFY(!f.overlay->isShown);
        QCOMPARE(timerLines(f.runLoop), QStringList{u"every 3600 ±60"_s});
    }

    void damagedModeReadsAsTheDock()
    {
        ApplicationFixture f;
        f.preferences.setValue(u"OBMenuBarMode"_s, u"true"_s);
        f.launch();
        QVERIFY(f.window()->isVisible());
        f.preferences.setValue(u"OBMenuBarMode"_s, true);
        QVERIFY(!f.delegate.applicationShouldTerminateAfterLastWindowClosed());
    }
};

ORVANE_TEST(DisplayModeTest, QApplication)
#include "DisplayModeTest.moc"
