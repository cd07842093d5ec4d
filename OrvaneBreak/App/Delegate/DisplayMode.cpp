// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppDelegate.h"
#include "BreakEngine.h"
#include "CheckBoxes.h"
#include "MainWindow.h"
#include "Palette.h"
#include "Preferences.h"
#include "WindowPresence.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString menuBarModeKey = u"OBMenuBarMode"_s;
const QString onboardedKey = u"OBOnboarded"_s;

} // namespace

bool AppDelegate::isMenuBarMode() const
{
    return m_preferences.boolean(menuBarModeKey).value_or(false);
}

void AppDelegate::buildMainWindow()
{
    m_mainWindow = std::make_unique<MainWindow>(std::move(m_menuBar), winSize);
    m_presence.adopt(*m_mainWindow);
    m_mainView = buildMainView();
    m_mainWindow->addPage(m_mainView);
    m_mainWindow->menuBar()->setVisible(!isMenuBarMode());
    addShortcuts(*m_mainWindow);
    m_mainWindow->installEventFilter(this);
    m_mainWindow->onReturn = [this] {
        if (!m_mainView->isHidden())
            m_breakButton->click();
    };
    m_mainWindow->onBack = [this] {
        if (m_mainView->isHidden())
            showMain();
    };
    if (!isMenuBarMode())
        m_presence.bringToFront(*m_mainWindow);
}

void AppDelegate::showOnboardingIfNeeded()
{
    if (m_preferences.boolean(onboardedKey).value_or(false))
        return;
    // Stored before the question is shown, so that it is not asked again even if the process ends meanwhile.
    m_preferences.setValue(onboardedKey, true);

    QMessageBox question(m_mainWindow->isVisible() ? m_mainWindow.get() : nullptr);
    question.setObjectName(u"onboarding"_s);
    question.setWindowTitle(u"OrvaneBreak"_s);
    question.setWindowModality(Qt::ApplicationModal);
    question.setTextFormat(Qt::PlainText);
    question.setFont(systemFont(13, QFont::Normal));
    if (auto *welcome = question.findChild<QLabel *>(u"qt_msgbox_label"_s))
        welcome->setFont(systemFont(15, QFont::DemiBold));
    question.setIconPixmap(QApplication::windowIcon().pixmap(QSize(64, 64), qApp->devicePixelRatio()));
    question.setText(u"Bienvenue dans OrvaneBreak 👁"_s);
    question.setInformativeText(
        u"Où veux-tu que l'app vive ?\n\n"
        "Dans le Dock : une app classique avec sa fenêtre.\n"
        "Dans la barre de menus : un petit oeil discret en haut de l'écran, toujours à portée de clic.\n\n"
        "Tu pourras changer d'avis à tout moment dans la fenêtre de l'app."_s);
    QPushButton *dock = question.addButton(u"Dans le Dock"_s, QMessageBox::AcceptRole);
    const QPushButton *menuBar = question.addButton(u"Dans la barre de menus"_s, QMessageBox::ActionRole);
    question.setDefaultButton(dock);
    question.setEscapeButton(dock);
    addShortcuts(question);
    m_presence.adopt(question);
    m_presence.bringToFront(question);
    question.exec();
    // The process ends before there is an answer.
    if (!question.clickedButton())
        return;

    m_preferences.setValue(menuBarModeKey, question.clickedButton() == menuBar);
    if (m_menuBarCheckbox)
        setCheckedQuietly(*m_menuBarCheckbox, isMenuBarMode());
    applyDisplayMode();
}

void AppDelegate::applyDisplayMode()
{
    if (isMenuBarMode()) {
        m_statusController.enable(buildStatusMenu());
        m_statusController.setActive(m_engine.isActive());
        showMenuBarMode();
        awaitTray();
        return;
    }
    m_statusController.disable();
    m_isStandingIn = false;
    showMenuBarMode();
    QTimer::singleShot(0, this, [this] {
        // Desktops with focus-stealing prevention accept the second activation, once the window is visible.
        activate();
        m_presence.bringToFront(*m_mainWindow);
        activate();
        refreshMessageBadges();
    });
}

void AppDelegate::showMenuBarMode()
{
    const bool isAccessory = isMenuBarMode() && !m_isStandingIn;
    m_presence.setAccessory(isAccessory);
    m_mainWindow->menuBar()->setVisible(!isAccessory);
    m_mainWindow->setNote(
        m_isStandingIn ? u"Ce bureau n'affiche pas l'œil\u00a0: cette fenêtre le remplace."_s : QString());
}

void AppDelegate::standInForTray()
{
    m_isStandingIn = true;
    showMenuBarMode();
    if (m_mainWindow->isVisible())
        return;
    m_isUnused = true;
    // The keyboard stays with whoever is typing.
    m_mainWindow->setAttribute(Qt::WA_ShowWithoutActivating);
    m_mainWindow->show();
    m_mainWindow->setAttribute(Qt::WA_ShowWithoutActivating, false);
}

void AppDelegate::leaveToTray()
{
    if (!m_isStandingIn)
        return;
    m_isStandingIn = false;
    if (std::exchange(m_isUnused, false) || m_mainWindow->isMinimized())
        m_mainWindow->hide();
    showMenuBarMode();
}

void AppDelegate::followStoredMode()
{
    if (isMenuBarMode() != m_statusController.isEnabled())
        applyDisplayMode();
}

void AppDelegate::toggleMenuBarMode(const QCheckBox &sender)
{
    m_preferences.setValue(menuBarModeKey, sender.isChecked());
    applyDisplayMode();
}

void AppDelegate::showMainWindow()
{
    if (!m_mainWindow)
        return;
    m_presence.bringToFront(*m_mainWindow);
    activate();
    refreshMessageBadges();
}

void AppDelegate::showLaunchedWindow()
{
    if (!isMenuBarMode())
        showMainWindow();
}

void AppDelegate::activate()
{
    // A modal dialog belongs in front of the window that it blocks.
    if (QWidget *modal = QApplication::activeModalWidget())
        m_presence.bringToFront(*modal);
    else if (m_mainWindow->isVisible())
        m_presence.bringToFront(*m_mainWindow);
}

bool AppDelegate::applicationShouldTerminateAfterLastWindowClosed() const
{
    return !isMenuBarMode();
}

bool AppDelegate::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Close && watched == m_mainWindow.get() && m_isStandingIn) {
        // Hidden, it would leave the user without a door.
        m_mainWindow->showMinimized();
        event->ignore();
        return true;
    }
    // The window is still visible during this event, so the check is deferred.
    if (event->type() == QEvent::Close)
        QMetaObject::invokeMethod(this, &AppDelegate::terminateWithoutWindows, Qt::QueuedConnection);
    if (event->type() == QEvent::WindowActivate && watched == m_mainWindow.get()) {
        m_isUnused = false;
        // The user may come from editing the file.
        refreshBreakUI();
        showStoredSettings();
    }
    if (event->type() == QEvent::PaletteChange && watched == m_mainWindow.get())
        refreshMessageBadges();
    return QObject::eventFilter(watched, event);
}

void AppDelegate::terminateWithoutWindows()
{
    // The break screen does not count as an open window.
    const QWidgetList windows = QApplication::topLevelWidgets();
    const bool isAnyOpen = std::any_of(windows.begin(), windows.end(), [](const QWidget *window) {
        return window->isVisible() &&
               (window->windowType() == Qt::Window || window->windowType() == Qt::Dialog) &&
               window->testAttribute(Qt::WA_QuitOnClose);
    });
    if (!isAnyOpen && applicationShouldTerminateAfterLastWindowClosed())
        terminate();
}
