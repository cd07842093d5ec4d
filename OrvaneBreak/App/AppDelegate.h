// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "StatusItem/StatusItemController.h"

#include <QObject>

#include <memory>

class BreakEngine;
class QMenu;

/// The one object that wires everything the user sees to the engine. Lives from before the event loop starts
/// until after it has ended. User-interface thread only.
class AppDelegate final : public QObject
{
    Q_OBJECT

public:
    /// What the delegate works with; the references outlive it.
    struct Services
    {
        BreakEngine &engine;
        StatusItemController::MakeTrayItem makeTrayItem;
    };

    explicit AppDelegate(Services services);
    ~AppDelegate() override;

    /// Brings the application up; called once, when the event loop is about to start. Reminders stay off.
    /// With the environment variable ORVANE_DEBUG_BREAK set to exactly "1" a break begins at once.
    void applicationDidFinishLaunching();

    /// Ends a running break and stops every timer of the engine; called once, before the process ends.
    void applicationWillTerminate();

    /// Ends the application.
    void terminate();

    /// Switches reminders off when they are on, and on when they are off.
    void breakToggled();

    /// Begins a break, whether or not reminders are on.
    void breakNowPressed();

    /// Puts the next break off by ten minutes; ends a running one.
    void postponePressed();

private:
    [[nodiscard]] std::unique_ptr<QMenu> buildStatusMenu();
    void refreshBreakUI();

    BreakEngine &m_engine;
    StatusItemController m_statusController;
};
