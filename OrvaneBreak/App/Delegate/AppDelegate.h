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

/// Owns every window and menu and connects them to the engine. Exists from before the event loop starts until
/// after it ends. User-interface thread only.
class AppDelegate final : public QObject
{
    Q_OBJECT

public:
    /// Size of the main window's content in device-independent pixels; both pages are laid out in it.
    static constexpr QSize winSize{430, 500};

    /// The delay after the launch of work that is not visible, so that the first window is painted before it.
    static constexpr std::chrono::seconds deferredWorkDelay{1};

    /// What the delegate uses; the references outlive it.
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

    /// Starts the application; called once, when the event loop starts. Reminders stay off. If the
    /// environment variable ORVANE_DEBUG_SETTINGS is exactly "1", selects the settings page; if
    /// ORVANE_DEBUG_BREAK is, starts a break.
    void applicationDidFinishLaunching();

    /// Ends a running break, stops the engine's timers and installs a pending update; called once, before the
    /// process ends.
    void applicationWillTerminate();

    /// Ends the application.
    void terminate();

    /// Whether closing the last window ends the application: true in Dock mode, false in menu-bar mode.
    [[nodiscard]] bool applicationShouldTerminateAfterLastWindowClosed() const;

    /// Switches reminders on if they are off, and off if they are on.
    void breakToggled();

    /// Starts a break, whether or not reminders are on.
    void breakNowPressed();

    /// Ends a running break; while reminders are on, the next break comes in ten minutes.
    void postponePressed();

    /// Stores the chosen number of minutes under "OBIntervalMinutes" and restarts the wait with it.
    void intervalChanged(const QComboBox &sender);

    /// Stores the chosen number of seconds under "OBPauseSeconds"; a running break keeps its end.
    void pauseDurationChanged(const QComboBox &sender);

    /// Stores the state of the check box under "OBSoundEnabled".
    void toggleSound(const QCheckBox &sender);

    /// Switches the main window to its settings page, without showing the window.
    void showSettings();

    /// Switches the main window to its main page.
    void showMain();

    /// Stores the state of the check box under "OBMenuBarMode" and applies it.
    void toggleMenuBarMode(const QCheckBox &sender);

    /// Brings the main window to the front, on the page it was left on. Does nothing before the launch.
    void showMainWindow();

    /// The same in Dock mode; in menu-bar mode a launch shows no window.
    void showLaunchedWindow();

    /// Sets whether the session opens the application at login. After a failure the check box shows the
    /// actual state.
    void toggleLoginItem(QCheckBox &sender);

    /// Sets both automatic checks and automatic downloads of updates to the state of the check box.
    void toggleAutoUpdates(const QCheckBox &sender);

    /// Opens the makers' web site in the browser; does nothing unless its configured address is valid and
    /// uses HTTPS.
    static void openOrvaneLabs();

    /// Opens the messages window with the current conversation; a pending message counts as shown.
    void showMessages();

    /// Sends the text in the reply field of the messages window and adds it to the conversation, unless it is
    /// there because this process could not send it; does nothing if it is only white space. The user is told
    /// only of a failure, and gets the text back into the field.
    void sendReply();

    /// Opens the form for reporting a problem, and then tells the user whether the report was sent. After a
    /// failure the next form starts with the same report.
    void reportProblemPressed();

    /// Asks the makers' server for a message and shows it if no break is showing, no other dialog is open and
    /// the main window is visible; otherwise only the badges announce it.
    void syncWithServer();

protected:
    /// Watches the windows for being closed.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildMenu();
    [[nodiscard]] static QMenu *editMenuItem(QWidget &parent);
    void addShortcuts(QWidget &window) const;
    [[nodiscard]] std::unique_ptr<QMenu> buildStatusMenu();
    void buildMainWindow();
    [[nodiscard]] QWidget *buildMainView();
    [[nodiscard]] QWidget *buildSettingsView();
    void ensureSettingsView();
    void showStoredSettings();
    void followStoredMode();
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
    void standInForTray();
    void leaveToTray();
    void showMenuBarMode();
    void terminateWithoutWindows();
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

    // The messages window is created when it is first opened, the settings page shortly after the launch,
    // everything else at the launch.
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
    struct
    {
        QString text;
        QString email;
    } m_unsentReport;
    QStringList m_unsentReplies;      ///< In the conversation, but not sent.
    bool m_shownActive = false;       ///< Whether the status menu shows reminders as on.
    bool m_isMessageHeldBack = false; ///< Whether the pending message waits for the open dialogs.
    bool m_isStandingIn = false;      ///< Whether the main window is there in place of the eye.
    bool m_isUnused = false;          ///< Whether it opened for that, and the user has not been in it since.
    QWidget *m_mainView = nullptr;
    QWidget *m_settingsView = nullptr;
    Timer m_trayTimer;
    Timer m_deferredWork;
    Timer m_syncTimer;
};
