// SPDX-License-Identifier: GPL-3.0-or-later
// Reminders, settings and windows.
#include "BreakOverlayPanel.h"
#include "Support/MessagesFixture.h"
#include "Year.h"

#include <QCheckBox>
#include <QComboBox>

#include <array>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Event = EngineModel::Event;

void Year::toggleReminders()
{
    const bool wasActive = m_app->model.isActive();
    note(wasActive ? u"reminders off"_s : u"reminders on"_s);
    if (m_app->isMenuBarMode && pick(2))
        m_app->tray.choose(wasActive ? u"Arrêter les rappels"_s : u"Protéger mes yeux"_s);
    else
        m_app->find<QPushButton>(u"breakButton"_s)->click();
    m_app->tell(wasActive ? Event::Stop : Event::Start);
}

void Year::takeBreak()
{
    note(u"a break now"_s);
    if (m_app->isMenuBarMode)
        m_app->tray.choose(u"Faire une pause maintenant"_s);
    else
        m_app->delegate.breakNowPressed();
    m_app->tell(Event::BreakNow);
}

void Year::postpone()
{
    note(u"ten minutes later"_s);
    if (m_app->isMenuBarMode)
        m_app->tray.choose(u"Reporter de 10 minutes"_s);
    else
        m_app->delegate.postponePressed();
    m_app->tell(Event::Postpone, 10);
}

void Year::endBreak()
{
    QWidget *panel = m_app->panel();
    if (!panel && m_app->model.isOnBreak()) {
        // While the session is locked, only the menu can end the break.
        toggleReminders();
        return;
    }
    if (!panel)
        return;
    const int way = pick(3);
    note(u"the break is skipped: %1"_s.arg(way));
    if (way == 0)
        panel->findChild<QPushButton *>(u"skipButton"_s)->click();
    else if (way == 1)
        QTest::keyClick(panel, Qt::Key_Escape);
    else
        QTest::keyClick(panel, Qt::Key_Period, Qt::ControlModifier);
    m_app->tell(Event::Skip);
}

void Year::chooseInterval()
{
    auto *popUp = m_app->find<QComboBox>(u"intervalPopUp"_s);
    const int index = pick(popUp->count());
    note(u"interval: "_s + popUp->itemText(index));
    popUp->setCurrentIndex(index);
    m_app->model.intervalMinutes = std::array{10, 20, 30, 45}.at(static_cast<std::size_t>(index));
    Q_EMIT popUp->activated(index);
    m_app->tell(Event::Reschedule);
}

void Year::choosePause()
{
    auto *popUp = m_app->find<QComboBox>(u"pausePopUp"_s);
    const int index = pick(popUp->count());
    note(u"length of a break: "_s + popUp->itemText(index));
    popUp->setCurrentIndex(index);
    m_app->model.pauseSeconds = std::array{20, 30, 60}.at(static_cast<std::size_t>(index));
    Q_EMIT popUp->activated(index);
}

void Year::chooseSound()
{
    note(u"sound"_s);
    auto *box = m_app->find<QCheckBox>(u"soundCheckbox"_s);
    box->click();
    m_app->model.soundEnabled = box->isChecked();
}

void Year::editPreferences()
{
    // Pairs of a stored value and its effective value.
    static const std::array<std::pair<QJsonValue, int>, 7> values{
        {{10, 10}, {30, 30}, {15, 20}, {u"10"_s, 20}, {10.5, 20}, {-10, 20}, {QJsonValue::Null, 20}}};
    const auto &[stored, effective] = values.at(static_cast<std::size_t>(pick(7)));
    note(u"the preferences are edited: "_s + stored.toVariant().toString());
    m_app->preferences.setValue(u"OBIntervalMinutes"_s, stored);
    m_app->model.intervalMinutes = effective;
    m_app->preferences.setValue(u"OBPauseSeconds"_s, stored);
    m_app->model.pauseSeconds = effective == 30 ? 30 : 20;
    m_app->preferences.setValue(u"OBSoundEnabled"_s, stored);
    m_app->model.soundEnabled = false;
}

void Year::changeMode()
{
    note(u"the other mode"_s);
    m_app->find<QCheckBox>(u"menuBarCheckbox"_s)->click();
    m_app->isMenuBarMode = !m_app->isMenuBarMode;
}

void Year::toggleUpdates()
{
    note(u"automatic updates"_s);
    m_app->find<QCheckBox>(u"autoUpdatesCheckbox"_s)->click();
    m_app->find<QCheckBox>(u"loginCheckbox"_s)->click();
}

void Year::turnPage()
{
    note(u"the other page"_s);
    const bool isMain = !m_app->find<QWidget>(u"mainView"_s)->isHidden();
    m_app->find<QPushButton>(isMain ? u"settingsButton"_s : u"backButton"_s)->click();
}

void Year::openWindow()
{
    note(u"the window"_s);
    if (m_app->isMenuBarMode)
        m_app->tray.choose(u"Ouvrir OrvaneBreak…"_s);
    else
        m_app->delegate.showMainWindow();
}

void Year::closeWindow()
{
    if (Launched::dialog() || m_app->window()->isHidden())
        return;
    const QWidget *messages = m_app->window(u"messagesWindow"_s);
    const bool isLast = !messages || messages->isHidden();
    const bool isToEnd = isLast && !m_app->isMenuBarMode;
    // That ends the program, which must be rare enough for long runs.
    if (isToEnd && pick(8))
        return;
    note(u"the window is closed"_s);
    m_app->window()->close();
    settle();
    if (!isToEnd)
        return;
    // The program has stopped the engine before its end.
    m_app->tell(Event::Stop);
    relaunch();
}

void Year::relaunch()
{
    quit();
    if (!hasFailed())
        launch();
}
