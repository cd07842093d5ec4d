// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Updater.h"

#include <QObject>

/// The application's entry point to the updater.
class SPUStandardUpdaterController final : public QObject
{
    Q_OBJECT

public:
    /// Starts the updater when `startingUpdater`; see SPUUpdater::start().
    SPUStandardUpdaterController(bool startingUpdater, SPUUpdater::Services services,
                                 SPUUpdater::Configuration configuration);

    [[nodiscard]] SPUUpdater &updater() { return m_updater; }

    /// See SPUUpdater::checkForUpdates().
    void checkForUpdates();

private:
    SPUUpdater m_updater;
};
