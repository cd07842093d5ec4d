// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppDelegate.h"
#include "BreakEngine.h"
#include "BreakSettings.h"
#include "CheckBoxes.h"
#include "LoginItem.h"
#include "MainWindow.h"
#include "Palette.h"
#include "StandardUpdaterController.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QPushButton>
#include <QUrl>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int postponementMinutes = 10;

} // namespace

void AppDelegate::refreshBreakUI()
{
    followStoredMode();
    const bool isActive = m_engine.isActive();
    m_breakButton->setText(isActive ? u"Arrêter les rappels"_s : u"Protéger mes yeux"_s);
    m_breakStatusLabel->setText(m_engine.statusText());
    m_breakStatusLabel->setTextColor(isActive ? breakTeal() : tertiaryLabelColor());
    m_breakStatusLabel->setFont(systemFont(13, isActive ? QFont::DemiBold : QFont::Normal));
    m_hintLabel->setText(u"Toutes les %1 min : regarde à 6 mètres pendant %2 s"_s
                             .arg(BreakSettings::intervalMinutes(m_preferences))
                             .arg(BreakSettings::pauseSeconds(m_preferences)));
    m_statusController.setActive(isActive);
    // The engine reports a change every minute, but the entries depend only on this state.
    const bool hasChanged = std::exchange(m_shownActive, isActive) != isActive;
    if (hasChanged && m_statusController.isEnabled())
        m_statusController.enable(buildStatusMenu());
}

void AppDelegate::breakToggled()
{
    if (m_engine.isActive())
        m_engine.stop();
    else
        m_engine.start();
}

void AppDelegate::breakNowPressed()
{
    m_engine.breakNow();
}

void AppDelegate::postponePressed()
{
    m_engine.postpone(postponementMinutes);
}

void AppDelegate::intervalChanged(const QComboBox &sender)
{
    BreakSettings::setIntervalMinutes(m_preferences, sender.currentData().toInt());
    m_engine.rescheduleFromSettings();
    refreshBreakUI();
}

void AppDelegate::pauseDurationChanged(const QComboBox &sender)
{
    BreakSettings::setPauseSeconds(m_preferences, sender.currentData().toInt());
    refreshBreakUI();
}

void AppDelegate::toggleSound(const QCheckBox &sender)
{
    BreakSettings::setSoundEnabled(m_preferences, sender.isChecked());
}

void AppDelegate::showSettings()
{
    ensureSettingsView();
    m_mainWindow->showPage(m_settingsView);
    m_settingsView->findChild<QWidget *>(u"backButton"_s)->setFocus();
    showStoredSettings();
}

void AppDelegate::showMain()
{
    m_mainWindow->showPage(m_mainView);
    m_mainView->findChild<QWidget *>(u"settingsButton"_s)->setFocus();
}

void AppDelegate::toggleLoginItem(QCheckBox &sender)
{
    if (!m_loginItem.setEnabled(sender.isChecked()))
        setCheckedQuietly(sender, m_loginItem.isEnabled());
}

void AppDelegate::toggleAutoUpdates(const QCheckBox &sender)
{
    SPUUpdater &updater = m_updaterController.updater();
    updater.setAutomaticallyChecksForUpdates(sender.isChecked());
    updater.setAutomaticallyDownloadsUpdates(sender.isChecked());
}

void AppDelegate::openOrvaneLabs()
{
    const QUrl address(QStringLiteral(ORVANE_WEBSITE_URL), QUrl::StrictMode);
    if (address.isValid() && address.scheme() == "https"_L1)
        QDesktopServices::openUrl(address);
}
