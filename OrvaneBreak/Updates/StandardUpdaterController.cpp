// SPDX-License-Identifier: GPL-3.0-or-later
#include "Updates/StandardUpdaterController.h"

#include "Platform/Preferences.h"

#include <QMessageBox>

using namespace Qt::StringLiterals;

namespace {

const QString intervalKey = u"SUScheduledCheckInterval"_s;
const QString checksKey = u"SUEnableAutomaticChecks"_s;
const QString downloadsKey = u"SUAutomaticallyUpdate"_s;

constexpr qint64 defaultInterval = 86400;

} // namespace

SPUUpdater::SPUUpdater(Preferences &settings)
    : m_settings(settings)
{
}

std::chrono::seconds SPUUpdater::updateCheckInterval() const
{
    const qint64 stored = m_settings.integer(intervalKey).value_or(0);
    return std::chrono::seconds(stored > 0 ? stored : defaultInterval);
}

void SPUUpdater::setUpdateCheckInterval(std::chrono::seconds interval)
{
    m_settings.setValue(intervalKey, static_cast<qint64>(interval.count()));
}

bool SPUUpdater::automaticallyChecksForUpdates() const
{
    return m_settings.boolean(checksKey).value_or(false);
}

void SPUUpdater::setAutomaticallyChecksForUpdates(bool checks)
{
    m_settings.setValue(checksKey, checks);
}

bool SPUUpdater::automaticallyDownloadsUpdates() const
{
    return m_settings.boolean(downloadsKey).value_or(false);
}

void SPUUpdater::setAutomaticallyDownloadsUpdates(bool downloads)
{
    m_settings.setValue(downloadsKey, downloads);
}

SPUStandardUpdaterController::SPUStandardUpdaterController(Preferences &settings)
    : m_updater(settings)
{
}

void SPUStandardUpdaterController::checkForUpdates()
{
    auto *answer = new QMessageBox(QMessageBox::Information, u"OrvaneBreak"_s,
                                   u"Cette version ne sait pas encore se mettre à jour toute seule."_s);
    answer->setTextFormat(Qt::PlainText);
    answer->setAttribute(Qt::WA_DeleteOnClose);
    answer->open();
}
