// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"
#include "StatusItemController.h"

#include <QObject>
#include <QSize>

#include <chrono>
#include <functional>
#include <memory>

class AlertQueue;
class AppearanceLabel;
class BadgeImageView;
class BreakEngine;
class Bundle;
class LauncherCount;
class LoginItem;
class MainWindow;
class MessagesWindow;
class Preferences;
class QAction;
class QCheckBox;
class QComboBox;
class QMenu;
class QMenuBar;
class QPushButton;
class SPUStandardUpdaterController;
class ServerChannel;
class SymbolButton;
class WindowPresence;

/// The one object that owns every window and menu and wires them to the engine. Lives from before the event
/// loop starts until after it has ended. User-interface thread only.
class AppDelegate final : public QObject
{
    Q_OBJECT

public:
    /// Size of the main window's content in device-independent pixels; both pages are laid out in it.
    static constexpr QSize winSize{430, 500};

    /// What nobody sees begins as long after the launch, when the first window has been painted.
    static constexpr std::chrono::seconds settlingTime{1};

    /// What the delegate works with; the references outlive it.
    struct Services
    {
        BreakEngine &engine;
        RunLoop &runLoop;
        Preferences &preferences;
        LoginItem &loginItem;
        SPUStandardUpdaterController &updaterController;
        WindowPresence &presence;
        const Bundle &bundle;
        ServerChannel &channel;
        LauncherCount &launcherCount;
        AlertQueue &alerts;
        StatusItemController::MakeTrayItem makeTrayItem;
        std::function<void()> installCrashReporter;
    };

    explicit AppDelegate(Services services);
    ~AppDelegate() override;

    /// Brings the application up in its fixed order; called once, when the event loop is about to start.
    /// Reminders stay off. With ORVANE_DEBUG_SETTINGS set to exactly "1" in the environment the settings page
    /// is chosen, with ORVANE_DEBUG_BREAK a break begins at once.
    void applicationDidFinishLaunching();

    /// Ends a running break, stops every timer of the engine and has a waiting update installed; called once,
    /// before the process ends.
    void applicationWillTerminate();

    /// Ends the application.
    void terminate();

    /// Whether closing the last window ends the application: in the Dock it does, in the menu bar it does
    /// not.
    [[nodiscard]] bool applicationShouldTerminateAfterLastWindowClosed() const;

    /// Switches reminders off when they are on, and on when they are off.
    void breakToggled();

    /// Begins a break, whether or not reminders are on.
    void breakNowPressed();

    /// Puts the next break off by ten minutes; ends a running one.
    void postponePressed();

    /// Stores the chosen number of minutes under "OBIntervalMinutes" and restarts the wait with it.
    void intervalChanged(const QComboBox &sender);

    /// Stores the chosen number of seconds under "OBPauseSeconds"; a running break keeps its end.
    void pauseDurationChanged(const QComboBox &sender);

    /// Stores the state of the box under "OBSoundEnabled".
    void toggleSound(const QCheckBox &sender);

    /// Switches the main window to its settings page, without showing the window.
    void showSettings();

    /// Switches the main window to its main page.
    void showMain();

    /// Stores the state of the box under "OBMenuBarMode" and applies it.
    void toggleMenuBarMode(const QCheckBox &sender);

    /// Brings the main window to the front, on the page it was left on.
    void showMainWindow();

    /// Sets whether the session opens the application at login. After a failure the check box shows the
    /// actual state.
    void toggleLoginItem(QCheckBox &sender);

    /// Sets both automatic checks and automatic downloads of updates to the state of the box.
    void toggleAutoUpdates(const QCheckBox &sender);

    /// Opens the makers' web site in the browser; does nothing when its configured address is none.
    static void openOrvaneLabs();

    /// Opens the window with the conversation with the makers, built anew; a pending message counts as read
    /// then.
    void showMessages();

    /// Sends what stands in the reply field of the messages window and keeps it in the conversation; does
    /// nothing when that is white space alone. Tells the user only when it could not be sent.
    void sendReply();

    /// Lets the user write to the makers about a problem, and tells whether that was sent.
    void reportProblemPressed();

    /// Asks the makers' server for a message, and shows it when the moment is right: no break is on, no other
    /// dialog is open and the main window can be seen. Otherwise the badges tell of it.
    void syncWithServer();

protected:
    /// Notices the closing of windows.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildMenu();
    [[nodiscard]] static QMenu *editMenuItem(QWidget &parent);
    [[nodiscard]] std::unique_ptr<QMenu> buildStatusMenu();
    void buildMainWindow();
    [[nodiscard]] QWidget *buildMainView();
    [[nodiscard]] QWidget *buildSettingsView();
    void ensureSettingsView();
    void buildRhythmCards(QWidget &root);
    void buildSystemCard(QWidget &root);
    void buildFooter(QWidget &root);
    void showOnboardingIfNeeded();
    void applyDisplayMode();
    void refreshBreakUI();
    void refreshMessageBadges();
    void showPendingMessageIfSafe();
    void showPendingMessage();
    void sendReport(const QString &text, const QString &email);
    void showAlert(const QString &name, const QString &message, const QString &information,
                   const QString &button = QStringLiteral("OK"), const std::function<void()> &dismissed = {});
    void activate();
    void awaitTray();
    void lastWindowMayHaveClosed();
    [[nodiscard]] bool isMenuBarMode() const;

    BreakEngine &m_engine;
    RunLoop &m_runLoop;
    Preferences &m_preferences;
    LoginItem &m_loginItem;
    SPUStandardUpdaterController &m_updaterController;
    WindowPresence &m_presence;
    const Bundle &m_bundle;
    ServerChannel &m_channel;
    LauncherCount &m_launcherCount;
    std::function<void()> m_installCrashReporter;
    AlertQueue &m_alerts;
    StatusItemController m_statusController;

    // All but the messages window are there from the launch to the end, the settings page from shortly after
    // it.
    std::unique_ptr<QMenuBar> m_menuBar; ///< Until the main window takes it.
    std::unique_ptr<MainWindow> m_mainWindow;
    std::unique_ptr<MessagesWindow> m_messagesWindow;
    QPushButton *m_breakButton = nullptr;
    AppearanceLabel *m_breakStatusLabel = nullptr;
    AppearanceLabel *m_hintLabel = nullptr;
    QCheckBox *m_loginCheckbox = nullptr;
    QCheckBox *m_menuBarCheckbox = nullptr;
    SymbolButton *m_messagesButton = nullptr;
    BadgeImageView *m_messagesBadge = nullptr;
    QAction *m_appMessagesItem = nullptr;
    bool m_shownActive = false; ///< Whether reminders are on in what is shown.
    QWidget *m_mainView = nullptr;
    QWidget *m_settingsView = nullptr;
    Timer m_trayDeadline;
    Timer m_settling;
    Timer m_syncTimer;
};
