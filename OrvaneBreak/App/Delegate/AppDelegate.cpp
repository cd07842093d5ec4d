// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppDelegate.h"

#include "AlertQueue.h"
#include "BreakEngine.h"
#include "LoginItem.h"
#include "MainWindow.h"
#include "MessagesWindow.h"
#include "Palette.h"
#include "StandardUpdaterController.h"
#include "SymbolButton.h"
#include "WindowPresence.h"

#include <QCoreApplication>
#include <QMenuBar>

#include <utility>

using namespace std::chrono_literals;

namespace {

/// How long to wait for a tray, which may start with the session, before the main window stands in for it.
constexpr Interval trayTimeout = 5s;

bool isDebugSwitchOn(const char *variable)
{
    return qgetenv(variable) == "1";
}

} // namespace

AppDelegate::AppDelegate(Services services)
    : m_engine(services.engine)
    , m_runLoop(services.runLoop)
    , m_preferences(services.preferences)
    , m_loginItem(services.loginItem)
    , m_updaterController(services.updaterController)
    , m_presence(services.presence)
    , m_bundle(services.bundle)
    , m_channel(services.channel)
    , m_launcherCount(services.launcherCount)
    , m_installCrashReporter(std::move(services.installCrashReporter))
    , m_alerts(services.alerts)
    , m_statusController(std::move(services.makeTrayItem))
{
    m_alerts.onOpen = [this](QDialog &dialog) { addShortcuts(dialog); };
    m_alerts.onIdle = [this] {
        if (std::exchange(m_isMessageHeldBack, false))
            showPendingMessageIfSafe();
    };
    m_statusController.onHosted = [this] { leaveToTray(); };
    m_statusController.onLost = [this] { awaitTray(); };
}

AppDelegate::~AppDelegate()
{
    m_engine.onChange = nullptr;
    m_alerts.onOpen = nullptr;
    m_alerts.onIdle = nullptr;
    m_loginItem.onRefused = nullptr;
}

void AppDelegate::applicationDidFinishLaunching()
{
    m_installCrashReporter();
    m_presence.setAccessory(isMenuBarMode());
    buildMenu();
    buildMainWindow();
    m_engine.onChange = [this] {
        refreshBreakUI();
        m_alerts.proceed();
    };
    if (isMenuBarMode()) {
        m_statusController.enable(buildStatusMenu());
        awaitTray();
    } else {
        activate();
    }
    showOnboardingIfNeeded();
    refreshBreakUI();
    m_deferredWork = m_runLoop.scheduleOnce(m_runLoop.now() + deferredWorkDelay, 1s, [this] {
        ensureSettingsView();
        syncWithServer();
    });
    m_syncTimer = m_runLoop.scheduleRepeating(1h, 1min, [this] { syncWithServer(); });
    m_updaterController.updater().setUpdateCheckInterval(1h);
    if (isDebugSwitchOn("ORVANE_DEBUG_SETTINGS"))
        showSettings();
    if (isDebugSwitchOn("ORVANE_DEBUG_BREAK"))
        m_engine.breakNow();
}

void AppDelegate::awaitTray()
{
    m_trayTimer = m_runLoop.scheduleOnce(m_runLoop.now() + trayTimeout, 1s, [this] {
        if (!m_statusController.isEnabled() || m_statusController.isHosted())
            return;
        if (m_engine.isOnBreak())
            awaitTray();
        else
            standInForTray();
    });
}

void AppDelegate::applicationWillTerminate()
{
    m_engine.stop();
    m_updaterController.updater().confirmAtQuit();
}

void AppDelegate::terminate()
{
    // QApplication::quit() would close every window first, including the break screen before it releases the
    // keyboard.
    m_engine.stop();
    QCoreApplication::exit();
}
