// SPDX-License-Identifier: GPL-3.0-or-later
#include "StandardUpdaterController.h"

#include <utility>

SPUStandardUpdaterController::SPUStandardUpdaterController(bool startingUpdater,
                                                           SPUUpdater::Services services,
                                                           SPUUpdater::Configuration configuration)
    : m_updater(std::move(services), std::move(configuration))
{
    if (startingUpdater)
        m_updater.start();
}

void SPUStandardUpdaterController::checkForUpdates()
{
    m_updater.checkForUpdates();
}
