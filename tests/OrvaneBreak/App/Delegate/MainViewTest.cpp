// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakSettings.h"
#include "MainWindow.h"
#include "Palette.h"
#include "Support/ApplicationFixture.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class MainViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setWindowIcon(QPixmap(64, 64)); }
    void init() { failOnUnexpectedWarnings(); }

    void columnIsCentredFourPixelsAboveTheMiddle()
    {
        ApplicationFixture f;
        f.launch();
        const auto *page = f.find<QWidget>(u"mainView"_s);
        QCOMPARE(page->size(), QSize(430, 500));
        const auto *icon = f.find<QWidget>(u"applicationIcon"_s);
        const auto *hint = f.find<QWidget>(u"hintLabel"_s);
        QCOMPARE(icon->size(), QSize(92, 92));
        const int middle = (icon->y() + hint->y() + hint->height()) / 2;
        QVERIFY2(qAbs(middle - 246) <= 1, qPrintable(QString::number(middle)));
        for (const QString &name : {u"applicationIcon"_s, u"title"_s, u"pitch"_s, u"breakButton"_s,
                                    u"breakStatusLabel"_s, u"hintLabel"_s}) {
            const auto *view = f.find<QWidget>(name);
            QVERIFY2(qAbs(2 * view->x() + view->width() - 430) <= 1, qPrintable(name));
        }
    }

    void gapsOfTheColumn()
    {
        ApplicationFixture f;
        f.launch();
        const QStringList rows{u"applicationIcon"_s,  u"title"_s,    u"pitch"_s, u"breakButton"_s,
                               u"breakStatusLabel"_s, u"hintLabel"_s};
        const QList<int> gaps{14, 10, 24, 14, 8};
        for (qsizetype row = 0; row < gaps.size(); ++row) {
            const auto *above = f.find<QWidget>(rows.at(row));
            const auto *below = f.find<QWidget>(rows.at(row + 1));
            QVERIFY2(below->y() - (above->y() + above->height()) == gaps.at(row), qPrintable(rows.at(row)));
        }
    }

    void cornerButtonsAndBadge()
    {
        ApplicationFixture f;
        f.launch();
        const auto *gear = f.find<QPushButton>(u"settingsButton"_s);
        const auto *envelope = f.find<QPushButton>(u"messagesButton"_s);
        const auto *badge = f.find<QWidget>(u"messagesBadge"_s);
        QCOMPARE(gear->geometry(), QRect(430 - 14 - 30, 500 - 14 - 30, 30, 30));
        QCOMPARE(envelope->geometry(), QRect(430 - 14 - 30 - 4 - 30, 500 - 14 - 30, 30, 30));
        QCOMPARE(QRect(badge->mapTo(envelope, QPoint()), badge->size()), QRect(16, 0, 14, 14));
        QVERIFY(badge->isHidden());
        QCOMPARE(gear->toolTip(), u"Réglages"_s);
        QCOMPARE(gear->accessibleName(), u"Réglages"_s);
        QCOMPARE(envelope->toolTip(), u"Messages"_s);
        QCOMPARE(envelope->accessibleName(), u"Messages"_s);
    }

    void textsBeforeReminders()
    {
        ApplicationFixture f;
        f.launch();
        QCOMPARE(f.find<QLabel>(u"title"_s)->text(), u"OrvaneBreak"_s);
        QCOMPARE(f.find<QLabel>(u"pitch"_s)->text(),
                 u"Des pauses régulières pour tes yeux,\nla règle 20-20-20 sans y penser."_s);
        QCOMPARE(f.find<QPushButton>(u"breakButton"_s)->text(), u"Protéger mes yeux"_s);
        QCOMPARE(f.find<QLabel>(u"breakStatusLabel"_s)->text(), u"Rappels désactivés"_s);
        QCOMPARE(f.find<QLabel>(u"hintLabel"_s)->text(),
                 u"Toutes les 20 min : regarde à 6 mètres pendant 20 s"_s);
    }

    void theButtonSwitchesRemindersOnAndOff()
    {
        ApplicationFixture f;
        f.launch();
        auto *button = f.find<QPushButton>(u"breakButton"_s);
        const auto *status = f.find<QLabel>(u"breakStatusLabel"_s);
        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(f.engine.isActive());
        QCOMPARE(button->text(), u"Arrêter les rappels"_s);
        QCOMPARE(status->text(), u"Prochaine pause dans 20 min"_s);
        QCOMPARE(status->font().weight(), QFont::DemiBold);
        QCOMPARE(status->palette().color(QPalette::WindowText), breakTeal().resolved(status->palette()));
        f.runLoop.advance(61s);
        QCOMPARE(status->text(), u"Prochaine pause dans 19 min"_s);
        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(!f.engine.isActive());
        QCOMPARE(button->text(), u"Protéger mes yeux"_s);
        QCOMPARE(status->text(), u"Rappels désactivés"_s);
        QCOMPARE(status->font().weight(), QFont::Normal);
        QCOMPARE(status->palette().color(QPalette::WindowText),
                 tertiaryLabelColor().resolved(status->palette()));
    }

    void returnTogglesRemindersWhicheverButtonHasTheFocus()
    {
        ApplicationFixture f;
        f.launch();
        QVERIFY(QTest::qWaitForWindowActive(f.window()));
        QTest::keyClick(f.window(), Qt::Key_Return);
        QVERIFY(f.engine.isActive());
        f.find<QPushButton>(u"settingsButton"_s)->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QVERIFY(!f.engine.isActive());
        f.delegate.showSettings();
        QTest::keyClick(f.window(), Qt::Key_Return);
        QVERIFY(!f.engine.isActive());
    }

    void returnPressesTheButtonThatShowsTheFocus()
    {
        ApplicationFixture f;
        f.launch();
        QVERIFY(QTest::qWaitForWindowActive(f.window()));
        f.find<QPushButton>(u"messagesButton"_s)->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), f.find<QWidget>(u"settingsButton"_s));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QVERIFY(f.find<QWidget>(u"settingsView"_s)->isVisible());
        QVERIFY(!f.engine.isActive());
    }

    void theFocusFollowsThePage()
    {
        ApplicationFixture f;
        f.launch();
        QVERIFY(QTest::qWaitForWindowActive(f.window()));
        f.delegate.showSettings();
        QCOMPARE(QApplication::focusWidget(), f.find<QWidget>(u"backButton"_s));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QVERIFY(f.find<QWidget>(u"mainView"_s)->isVisible());
        QCOMPARE(QApplication::focusWidget(), f.find<QWidget>(u"settingsButton"_s));
    }

    void thePageScrollsOnAScreenThatIsTooLow()
    {
        MainWindow window(std::make_unique<QMenuBar>(), {430, 2000});
        auto *page = new QWidget;
        window.addPage(page);
        window.show();
        const QRect room = window.screen()->availableGeometry();
        QVERIFY(window.height() < room.height());
        auto *scroll = window.findChild<QScrollArea *>();
        scroll->verticalScrollBar()->setValue(scroll->verticalScrollBar()->maximum());
        const QPoint bottom = page->mapTo(&window, page->rect().bottomRight());
        QVERIFY2(window.rect().contains(bottom), "the last row can be scrolled to, beside the bar");
    }

    void clickOnTheBadgeIsAClickOnTheEnvelope()
    {
        ApplicationFixture f;
        f.launch();
        auto *badge = f.find<QWidget>(u"messagesBadge"_s);
        badge->show();
        const QPoint place = badge->mapTo(f.window(), badge->rect().center());
        QTest::mouseClick(f.window()->windowHandle(), Qt::LeftButton, {}, place);
        QVERIFY(f.window(u"messagesWindow"_s));
        f.window(u"messagesWindow"_s)->close();
    }

    void hintFollowsTheSettings()
    {
        ApplicationFixture f;
        f.preferences.setValue(u"OBIntervalMinutes"_s, 45);
        f.preferences.setValue(u"OBPauseSeconds"_s, 60);
        f.launch();
        QCOMPARE(f.find<QLabel>(u"hintLabel"_s)->text(),
                 u"Toutes les 45 min : regarde à 6 mètres pendant 60 s"_s);
    }

    void windowCannotBeResizedAndKeepsItsContentBelowTheMenuBar()
    {
        ApplicationFixture f;
        f.launch();
        QWidget *window = f.window();
        QCOMPARE(window->minimumSize(), window->maximumSize());
        QCOMPARE(window->windowTitle(), u"OrvaneBreak"_s);
        QCOMPARE(f.find<QWidget>(u"content"_s)->size(), QSize(430, 500));
        QVERIFY(window->windowFlags().testFlag(Qt::WindowMinimizeButtonHint));
        QVERIFY(!window->windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
    }
};

ORVANE_TEST(MainViewTest, QApplication)
#include "MainViewTest.moc"
