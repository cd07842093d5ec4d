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
    m_presence.adopt(question);
    m_presence.bringToFront(question);
    question.exec();

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
        m_presence.setAccessory(true);
        return;
    }
    m_statusController.disable();
    m_presence.setAccessory(false);
    QTimer::singleShot(0, this, [this] {
        // Desktops with focus-stealing prevention accept the second activation, once the window is visible.
        activate();
        m_presence.bringToFront(*m_mainWindow);
        activate();
        refreshMessageBadges();
    });
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
    // The window is still visible during this event, so the check is deferred.
    if (event->type() == QEvent::Close)
        QMetaObject::invokeMethod(this, &AppDelegate::terminateWithoutWindows, Qt::QueuedConnection);
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
