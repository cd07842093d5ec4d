// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/ApplicationFixture.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class MenusTest : public QObject
{
    Q_OBJECT

    static QStringList visibleTexts(const QMenu &menu)
    {
        QStringList texts;
        for (const QAction *action : menu.actions()) {
            if (action->isVisible())
                texts << (action->isSeparator() ? u"-"_s : action->text());
        }
        return texts;
    }

    static QMenu &mainMenu(int index)
    {
        return *ApplicationFixture::window()->findChild<QMenuBar *>()->actions().at(index)->menu();
    }

    static QAction &entry(const QMenu &menu, const QString &text)
    {
        for (QAction *action : menu.actions()) {
            if (action->text() == text)
                return *action;
        }
        qFatal("no such entry");
    }

    struct InMenuBar : ApplicationFixture
    {
        InMenuBar()
        {
            preferences.setValue(u"OBMenuBarMode"_s, true);
            launch();
        }
    };

private Q_SLOTS:
    void initTestCase() { QApplication::setWindowIcon(QPixmap(64, 64)); }
    void init() { failOnUnexpectedWarnings(); }

    void applicationMenu()
    {
        ApplicationFixture f;
        f.launch();
        const QMenu &menu = mainMenu(0);
        QCOMPARE(menu.title(), u"OrvaneBreak"_s);
        QCOMPARE(visibleTexts(menu),
                 (QStringList{u"Rechercher des mises à jour…"_s, u"Signaler un problème…"_s, u"-"_s,
                              u"Quitter OrvaneBreak"_s}));
        QVERIFY(!entry(menu, u"Message de Orvane Labs"_s).isVisible());
        QCOMPARE(menu.actions().at(1), &entry(menu, u"Message de Orvane Labs"_s));
        QCOMPARE(entry(menu, u"Quitter OrvaneBreak"_s).shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q));
    }

    void editMenuReachesTheFocusedTextField()
    {
        ApplicationFixture f;
        f.launch();
        const QMenu &menu = mainMenu(1);
        QCOMPARE(menu.title(), u"Édition"_s);
        QCOMPARE(visibleTexts(menu), (QStringList{u"Annuler"_s, u"Rétablir"_s, u"-"_s, u"Couper"_s,
                                                  u"Copier"_s, u"Coller"_s, u"Tout sélectionner"_s}));
        f.window()->setFocus();
        for (const QAction *action : menu.actions())
            QVERIFY2(action->isSeparator() || !action->isEnabled(), qPrintable(action->text()));

        auto *field = new QLineEdit(f.window());
        field->show();
        QVERIFY(QTest::qWaitForWindowActive(f.window()));
        field->setFocus();
        QTest::keyClicks(field, u"yeux"_s);
        for (const QAction *action : menu.actions())
            QVERIFY2(action->isSeparator() || action->isEnabled(), qPrintable(action->text()));
        entry(menu, u"Tout sélectionner"_s).trigger();
        QCOMPARE(field->selectedText(), u"yeux"_s);
        entry(menu, u"Couper"_s).trigger();
        QCOMPARE(field->text(), QString());
        entry(menu, u"Coller"_s).trigger();
        QCOMPARE(field->text(), u"yeux"_s);
        entry(menu, u"Annuler"_s).trigger();
        QCOMPARE(field->text(), QString());
        entry(menu, u"Rétablir"_s).trigger();
        QCOMPARE(field->text(), u"yeux"_s);
    }

    void editShortcuts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QKeySequence>("keys");
        QTest::newRow("undo") << u"Annuler"_s << QKeySequence(Qt::CTRL | Qt::Key_Z);
        QTest::newRow("redo") << u"Rétablir"_s << QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z);
        QTest::newRow("cut") << u"Couper"_s << QKeySequence(Qt::CTRL | Qt::Key_X);
        QTest::newRow("copy") << u"Copier"_s << QKeySequence(Qt::CTRL | Qt::Key_C);
        QTest::newRow("paste") << u"Coller"_s << QKeySequence(Qt::CTRL | Qt::Key_V);
        QTest::newRow("select all") << u"Tout sélectionner"_s << QKeySequence(Qt::CTRL | Qt::Key_A);
    }

    void editShortcuts()
    {
        QFETCH(const QString, text);
        QFETCH(const QKeySequence, keys);
        ApplicationFixture f;
        f.launch();
        QCOMPARE(entry(mainMenu(1), text).shortcut(), keys);
    }

    void shortcutsWorkInEveryWindow()
    {
        ApplicationFixture f;
        f.launch();
        f.delegate.showMessages();
        QWidget *messages = f.window(u"messagesWindow"_s);
        QVERIFY(QTest::qWaitForWindowActive(messages));
        QTest::keyClick(messages, Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!messages->isVisible());
        f.delegate.reportProblemPressed();
        QWidget *form = QApplication::activeModalWidget();
        QVERIFY(form && QTest::qWaitForWindowActive(form));
        bool hasQuit = false;
        connect(&entry(mainMenu(0), u"Quitter OrvaneBreak"_s), &QAction::triggered, form,
                [&hasQuit] { hasQuit = true; });
        QTest::keyClick(form, Qt::Key_Q, Qt::ControlModifier);
        QVERIFY(hasQuit);
        QTest::keyClick(form, Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!QApplication::activeModalWidget());
    }

    void inTheMenuBarTheWindowHasShortcutsOnly()
    {
        InMenuBar f;
        f.delegate.showMainWindow();
        QVERIFY(QTest::qWaitForWindowActive(f.window()));
        QVERIFY(!f.window()->findChild<QMenuBar *>()->isVisible());
        QTest::keyClick(f.window(), Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!f.window()->isVisible());
    }

    void f10OpensTheMenu()
    {
        ApplicationFixture f;
        f.launch();
        QVERIFY(QTest::qWaitForWindowActive(f.window()));
        QTest::keyClick(f.window(), Qt::Key_F10);
        QCOMPARE(QApplication::activePopupWidget(), &mainMenu(0));
        QApplication::activePopupWidget()->close();
    }

    void statusMenu()
    {
        InMenuBar f;
        const QStringList expected{u"Protéger mes yeux"_s,
                                   u"Faire une pause maintenant"_s,
                                   u"Reporter de 10 minutes"_s,
                                   u"-"_s,
                                   u"Ouvrir OrvaneBreak…"_s,
                                   u"-"_s,
                                   u"Rechercher des mises à jour…"_s,
                                   u"Signaler un problème…"_s,
                                   u"-"_s,
                                   u"Quitter OrvaneBreak"_s};
        QCOMPARE(f.tray.menuTexts(), expected);
        QSet<QString> names;
        for (const QAction *action : f.tray.menu->actions()) {
            QVERIFY(action->isEnabled());
            names.insert(action->objectName());
        }
        QCOMPARE(names.size(), expected.size());
    }

    void statusMenuFollowsTheReminders()
    {
        InMenuBar f;
        f.tray.choose(u"Protéger mes yeux"_s);
        QVERIFY(f.engine.isActive());
        QCOMPARE(f.tray.menuTexts().constFirst(), u"Arrêter les rappels"_s);
        QCOMPARE(f.tray.symbol, u"eye.fill"_s);
        f.tray.choose(u"Arrêter les rappels"_s);
        QVERIFY(!f.engine.isActive());
        QCOMPARE(f.tray.menuTexts().constFirst(), u"Protéger mes yeux"_s);
        QCOMPARE(f.tray.symbol, u"eye"_s);
    }

    void statusMenuStaysTheSameFromMinuteToMinute()
    {
        InMenuBar f;
        f.tray.choose(u"Protéger mes yeux"_s);
        const QMenu *menu = f.tray.menu.get();
        f.runLoop.advance(3min);
        QCOMPARE(f.tray.menu.get(), menu);
    }

    void statusMenuIsUpToDateWhenItReturns()
    {
        InMenuBar f;
        f.tray.choose(u"Protéger mes yeux"_s);
        auto *box = f.find<QCheckBox>(u"menuBarCheckbox"_s);
        box->setChecked(false);
        f.delegate.breakToggled();
        box->setChecked(true);
        QCOMPARE(f.tray.menuTexts().constFirst(), u"Protéger mes yeux"_s);
        f.delegate.breakToggled();
        QCOMPARE(f.tray.menuTexts().constFirst(), u"Arrêter les rappels"_s);
    }

    void breakAndPostponementWithRemindersOff()
    {
        InMenuBar f;
        f.tray.choose(u"Reporter de 10 minutes"_s);
        QVERIFY(!f.engine.isActive());
        QVERIFY(!f.engine.nextBreakDate());
        f.tray.choose(u"Faire une pause maintenant"_s);
        QVERIFY(f.engine.isOnBreak());
        QVERIFY(!f.engine.isActive());
    }

    void postponementIsTenMinutes()
    {
        InMenuBar f;
        f.engine.start();
        f.tray.choose(u"Reporter de 10 minutes"_s);
        QCOMPARE(f.engine.nextBreakDate(), f.runLoop.now() + 10min);
    }

    void openingTheWindow()
    {
        InMenuBar f;
        QVERIFY(!f.window()->isVisible());
        f.tray.choose(u"Ouvrir OrvaneBreak…"_s);
        QVERIFY(f.window()->isVisible());
    }

    void debugSwitches_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<bool>("acts");
        QTest::newRow("1") << QByteArray("1") << true;
        QTest::newRow("true") << QByteArray("true") << false;
        QTest::newRow("yes") << QByteArray("yes") << false;
        QTest::newRow("0") << QByteArray("0") << false;
        QTest::newRow("empty") << QByteArray("") << false;
        QTest::newRow("11") << QByteArray("11") << false;
    }

    void debugSwitches()
    {
        QFETCH(const QByteArray, value);
        QFETCH(const bool, acts);
        qputenv("ORVANE_DEBUG_SETTINGS", value);
        qputenv("ORVANE_DEBUG_BREAK", value);
        ApplicationFixture f;
        f.launch();
        qunsetenv("ORVANE_DEBUG_SETTINGS");
        qunsetenv("ORVANE_DEBUG_BREAK");
        QCOMPARE(f.find<QWidget>(u"settingsView"_s)->isVisible(), acts);
        QCOMPARE(f.engine.isOnBreak(), acts);
        QVERIFY(!f.engine.isActive());
        QCOMPARE(f.find<QPushButton>(u"breakButton"_s)->text(), u"Protéger mes yeux"_s);
    }

    void settingsSwitchDoesNotShowTheWindowInTheMenuBar()
    {
        qputenv("ORVANE_DEBUG_SETTINGS", "1");
        InMenuBar f;
        qunsetenv("ORVANE_DEBUG_SETTINGS");
        QVERIFY(!f.window()->isVisible());
        f.delegate.showMainWindow();
        QVERIFY(f.find<QWidget>(u"settingsView"_s)->isVisible());
    }
};

ORVANE_TEST(MenusTest, QApplication)
#include "MenusTest.moc"
