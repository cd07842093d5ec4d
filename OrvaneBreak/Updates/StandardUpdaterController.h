// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Updater.h"

#include <QObject>

/// The updater as the application sees it.
class SPUStandardUpdaterController final : public QObject
{
    Q_OBJECT

public:
    /// Starts the updater when `startingUpdater`; see SPUUpdater::start().
    SPUStandardUpdaterController(bool startingUpdater, SPUUpdater::Services services,
                                 SPUUpdater::Configuration configuration);

    [[nodiscard]] SPUUpdater &updater() { return m_updater; }

    /// Looks for an update at the user's request and shows what comes of it.
    void checkForUpdates();

private:
    SPUUpdater m_updater;
};
