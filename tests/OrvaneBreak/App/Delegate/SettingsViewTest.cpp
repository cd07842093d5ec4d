// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakSettings.h"
#include "Support/ApplicationFixture.h"
#include "Support/TestProgram.h"
#include "Support/WideFont.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QStyleOptionComboBox>
#include <QTest>
#include <QWheelEvent>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class SettingsViewTest : public QObject
{
    Q_OBJECT

    struct OnSettings : ApplicationFixture
    {
        OnSettings()
        {
            launch();
            delegate.showSettings();
        }
    };

    static void choose(QComboBox *popUp, int index)
    {
        popUp->setFocus();
        popUp->setCurrentIndex(index);
        Q_EMIT popUp->activated(index);
    }

private Q_SLOTS:
    void initTestCase() { QApplication::setWindowIcon(QPixmap(64, 64)); }
    void init() { failOnUnexpectedWarnings(); }

    void frames()
    {
        OnSettings f;
        QCOMPARE(f.find<QWidget>(u"backButton"_s)->geometry(), QRect(18, 46, 28, 28));
        QCOMPARE(f.find<QWidget>(u"intervalPopUp"_s)->geometry(), QRect(270, 102, 120, 26));
        QCOMPARE(f.find<QWidget>(u"pausePopUp"_s)->geometry(), QRect(270, 136, 120, 26));
        QCOMPARE(f.find<QWidget>(u"separator"_s)->geometry(), QRect(24, 372, 382, 1));
        QList<QRect> cards;
        for (const QWidget *card : f.find<QWidget>(u"settingsView"_s)->findChildren<QWidget *>(u"card"_s))
            cards << card->geometry();
        QCOMPARE(cards, (QList<QRect>{{24, 94, 382, 80}, {24, 184, 382, 38}, {24, 232, 382, 90}}));
        const QList<std::pair<QString, QPoint>> origins{
            {u"soundCheckbox"_s, {40, 193}},   {u"autoUpdatesCheckbox"_s, {40, 242}},
            {u"menuBarCheckbox"_s, {40, 269}}, {u"loginCheckbox"_s, {40, 296}},
            {u"updatesButton"_s, {24, 332}},   {u"versionLabel"_s, {24, 420}},
            {u"makersLabel"_s, {24, 438}},     {u"websiteLink"_s, {24, 470}},
        };
        for (const auto &[name, origin] : origins)
            QVERIFY2(f.find<QWidget>(name)->pos() == origin, qPrintable(name));
        const QList<std::pair<QString, int>> middles{
            {u"settingsTitle"_s, 60}, {u"intervalPopUpLabel"_s, 115}, {u"pausePopUpLabel"_s, 149}};
        for (const auto &[name, middle] : middles) {
            const auto *label = f.find<QWidget>(name);
            QVERIFY2(qAbs(2 * label->y() + label->height() - 2 * middle) <= 1, qPrintable(name));
        }
        QCOMPARE(f.find<QWidget>(u"settingsTitle"_s)->x(), 54);
    }

    void reportButtonStartsTenPixelsAfterTheUpdatesButton()
    {
        OnSettings f;
        const auto *updates = f.find<QPushButton>(u"updatesButton"_s);
        const auto *report = f.find<QPushButton>(u"reportButton"_s);
        QCOMPARE(report->x(), updates->x() + updates->width() + 10);
        QCOMPARE(report->y(), 332);
    }

    void nothingIsClippedOrOverlaps_data()
    {
        QTest::addColumn<int>("stretch");
        QTest::newRow("the desktop's font") << 100;
        QTest::newRow("a font 30 % wider") << 130;
    }

    void nothingIsClippedOrOverlaps()
    {
        QFETCH(const int, stretch);
        const WideFont font(stretch);
        OnSettings f;
        const auto *page = f.find<QWidget>(u"settingsView"_s);
        QList<QWidget *> controls;
        for (QWidget *control : page->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
            if (control->objectName() != "card"_L1)
                controls << control;
        }
        for (const QWidget *control : controls) {
            const QByteArray name = control->objectName().toUtf8();
            QVERIFY2(page->rect().contains(control->geometry()), name.constData());
            const bool isFrameGiven = name == "backButton" || name == "separator";
            QVERIFY2(isFrameGiven || control->width() >= control->sizeHint().width(), name.constData());
            if (const auto *popUp = qobject_cast<const QComboBox *>(control)) {
                QStyleOptionComboBox option;
                option.initFrom(popUp);
                const int room =
                    popUp->style()
                        ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, popUp)
                        .width();
                QVERIFY2(popUp->fontMetrics().horizontalAdvance(popUp->currentText()) <= room,
                         name.constData());
            }
            for (const QWidget *other : controls)
                QVERIFY2(other == control || !other->geometry().intersects(control->geometry()),
                         name.constData());
        }
    }

    void boxesOfACardAreAlike()
    {
        const WideFont font(130);
        OnSettings f;
        QSet<int> sizes;
        for (const QString &name : {u"autoUpdatesCheckbox"_s, u"menuBarCheckbox"_s, u"loginCheckbox"_s})
            sizes.insert(f.find<QCheckBox>(name)->font().pixelSize());
        QCOMPARE(sizes.size(), 1);
    }

    void popUpsShowTheSettings()
    {
        OnSettings f;
        const auto *interval = f.find<QComboBox>(u"intervalPopUp"_s);
        const auto *pause = f.find<QComboBox>(u"pausePopUp"_s);
        QCOMPARE(interval->count(), 4);
        QCOMPARE(interval->currentText(), u"20 minutes"_s);
        QCOMPARE(interval->currentData().toInt(), 20);
        QCOMPARE(pause->count(), 3);
        QCOMPARE(pause->currentText(), u"20 secondes"_s);
    }

    void intervalRestartsTheWaitAndTheHint()
    {
        OnSettings f;
        f.engine.start();
        f.runLoop.advance(5min);
        choose(f.find<QComboBox>(u"intervalPopUp"_s), 3);
        QCOMPARE(f.preferences.stored.value("OBIntervalMinutes"_L1), QJsonValue(45));
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 45min);
        QCOMPARE(f.find<QLabel>(u"hintLabel"_s)->text(),
                 u"Toutes les 45 min : regarde à 6 mètres pendant 20 s"_s);
        QCOMPARE(f.find<QLabel>(u"breakStatusLabel"_s)->text(), u"Prochaine pause dans 45 min"_s);
    }

    void pauseLengthLeavesTheRunningCountdown()
    {
        OnSettings f;
        f.engine.breakNow();
        f.runLoop.advance(5s);
        choose(f.find<QComboBox>(u"pausePopUp"_s), 2);
        QCOMPARE(f.preferences.stored.value("OBPauseSeconds"_L1), QJsonValue(60));
        QCOMPARE(f.find<QLabel>(u"hintLabel"_s)->text(),
                 u"Toutes les 20 min : regarde à 6 mètres pendant 60 s"_s);
        f.runLoop.advance(15s);
        QVERIFY(!f.engine.isOnBreak());
    }

    void soundBox()
    {
        OnSettings f;
        auto *box = f.find<QCheckBox>(u"soundCheckbox"_s);
        QVERIFY(!box->isChecked());
        box->click();
        QCOMPARE(f.preferences.stored.value("OBSoundEnabled"_L1), QJsonValue(true));
        box->click();
        QCOMPARE(f.preferences.stored.value("OBSoundEnabled"_L1), QJsonValue(false));
    }

    void updatesBoxIsOnOnlyIfBothAreOn_data()
    {
        QTest::addColumn<bool>("checks");
        QTest::addColumn<bool>("downloads");
        for (const bool checks : {false, true}) {
            for (const bool downloads : {false, true})
                QTest::addRow("%d %d", checks, downloads) << checks << downloads;
        }
    }

    void updatesBoxIsOnOnlyIfBothAreOn()
    {
        QFETCH(const bool, checks);
        QFETCH(const bool, downloads);
        ApplicationFixture f;
        f.updaterSettings.setValue(u"SUEnableAutomaticChecks"_s, checks);
        f.updaterSettings.setValue(u"SUAutomaticallyUpdate"_s, downloads);
        f.launch();
        auto *box = f.find<QCheckBox>(u"autoUpdatesCheckbox"_s);
        QCOMPARE(box->isChecked(), checks && downloads);
        const bool wanted = !box->isChecked();
        box->click();
        QCOMPARE(f.updaterController.updater().automaticallyChecksForUpdates(), wanted);
        QCOMPARE(f.updaterController.updater().automaticallyDownloadsUpdates(), wanted);
    }

    void updateIntervalIsAnHourWhateverIsStored()
    {
        ApplicationFixture f;
        f.updaterSettings.setValue(u"SUScheduledCheckInterval"_s, 86400);
        f.launch();
        QCOMPARE(f.updaterController.updater().updateCheckInterval(), 1h);
    }

    void loginBoxFollowsTheSystemEachTimeThePageIsShown()
    {
        OnSettings f;
        const auto *box = f.find<QCheckBox>(u"loginCheckbox"_s);
        QVERIFY(!box->isChecked());
        f.loginItem.isOn = true;
        f.delegate.showMain();
        f.delegate.showSettings();
        QVERIFY(box->isChecked());
    }

    void failedLoginItemCorrectsTheBox()
    {
        OnSettings f;
        f.loginItem.isRefusing = true;
        auto *box = f.find<QCheckBox>(u"loginCheckbox"_s);
        box->click();
        QVERIFY(!box->isChecked());
        f.loginItem.isRefusing = false;
        box->click();
        QVERIFY(box->isChecked());
        QVERIFY(f.loginItem.isOn);
    }

    void loginItemRefusedLaterCorrectsTheBox()
    {
        OnSettings f;
        auto *box = f.find<QCheckBox>(u"loginCheckbox"_s);
        box->click();
        QVERIFY(box->isChecked());
        f.loginItem.isOn = false;
        f.loginItem.onRefused();
        QVERIFY(!box->isChecked());
        QVERIFY(!f.loginItem.isOn);
    }

    void theWheelLeavesThePopUps()
    {
        OnSettings f;
        auto *popUp = f.find<QComboBox>(u"intervalPopUp"_s);
        QWheelEvent wheel(popUp->rect().center(), popUp->mapToGlobal(popUp->rect().center()), {}, {0, -120},
                          {}, {}, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(popUp, &wheel);
        QCOMPARE(popUp->currentText(), u"20 minutes"_s);
    }

    void whatOthersStoreIsShown()
    {
        OnSettings f;
        f.preferences.setValue(u"OBIntervalMinutes"_s, 45);
        f.preferences.setValue(u"OBPauseSeconds"_s, 60);
        f.preferences.setValue(u"OBSoundEnabled"_s, true);
        f.preferences.setValue(u"OBMenuBarMode"_s, true);
        // As when the user returns from an editor.
        QEvent activation(QEvent::WindowActivate);
        QCoreApplication::sendEvent(f.window(), &activation);
        QCOMPARE(f.find<QComboBox>(u"intervalPopUp"_s)->currentText(), u"45 minutes"_s);
        QCOMPARE(f.find<QComboBox>(u"pausePopUp"_s)->currentData().toInt(), 60);
        QVERIFY(f.find<QCheckBox>(u"soundCheckbox"_s)->isChecked());
        QVERIFY(f.find<QCheckBox>(u"menuBarCheckbox"_s)->isChecked());
        QCOMPARE(f.tray.items, 1);
        f.preferences.setValue(u"OBMenuBarMode"_s, false);
        f.engine.start();
        QCOMPARE(f.tray.items, 0);
    }

    void versionIsAQuestionMarkIfUnknown()
    {
        OnSettings f;
        QCOMPARE(f.find<QLabel>(u"versionLabel"_s)->text(), u"OrvaneBreak v?"_s);
    }

    void boxesActHoweverTheyAreChanged()
    {
        OnSettings f;
        // Screen readers change a box without a click.
        f.find<QCheckBox>(u"soundCheckbox"_s)->toggle();
        QVERIFY(BreakSettings::soundEnabled(f.preferences));
        f.find<QCheckBox>(u"loginCheckbox"_s)->toggle();
        QVERIFY(f.loginItem.isOn);
        f.find<QCheckBox>(u"menuBarCheckbox"_s)->toggle();
        QVERIFY(f.presence.isAccessory);
    }

    void pagesAreSwitchedByTheirButtonsAndByTheKeyboard()
    {
        ApplicationFixture f;
        f.launch();
        const auto *main = f.find<QWidget>(u"mainView"_s);
        const auto *settings = f.find<QWidget>(u"settingsView"_s);
        QVERIFY(main->isVisible() && !settings->isVisible());
        QTest::mouseClick(f.find<QPushButton>(u"settingsButton"_s), Qt::LeftButton);
        QVERIFY(!main->isVisible() && settings->isVisible());
        QTest::mouseClick(f.find<QPushButton>(u"backButton"_s), Qt::LeftButton);
        QVERIFY(main->isVisible() && !settings->isVisible());
        f.delegate.showSettings();
        QTest::keyClick(f.window(), Qt::Key_Escape);
        QVERIFY(main->isVisible());
        f.delegate.showSettings();
        QVERIFY(QTest::qWaitForWindowActive(f.window()));
        f.find<QWidget>(u"soundCheckbox"_s)->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left, Qt::AltModifier);
        QVERIFY(main->isVisible());
    }

    void tabVisitsEveryControlFromTopToBottom()
    {
        OnSettings f;
        QVERIFY(QTest::qWaitForWindowActive(f.window()));
        f.find<QWidget>(u"backButton"_s)->setFocus();
        QStringList visited;
        for (int step = 0; step < 9; ++step) {
            visited << QApplication::focusWidget()->objectName();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        const QStringList expected{u"backButton"_s,    u"intervalPopUp"_s,       u"pausePopUp"_s,
                                   u"soundCheckbox"_s, u"autoUpdatesCheckbox"_s, u"menuBarCheckbox"_s,
                                   u"loginCheckbox"_s, u"updatesButton"_s,       u"reportButton"_s};
        QCOMPARE(visited, expected);
        QCOMPARE(QApplication::focusWidget()->objectName(), u"websiteLink"_s);
    }
};

ORVANE_TEST(SettingsViewTest, QApplication)
#include "SettingsViewTest.moc"
