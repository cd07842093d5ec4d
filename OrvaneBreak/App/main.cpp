// SPDX-License-Identifier: GPL-3.0-or-later
#include "AlertQueue.h"
#include "AppDelegate.h"
#include "ApplicationService.h"
#include "AutostartEntry.h"
#include "BreakEngine.h"
#include "BreakOverlayController.h"
#include "Bundle.h"
#include "CommandLine.h"
#include "CoreDumpExport.h"
#include "CrashReporter.h"
#include "CrashUpload.h"
#include "DescriptorReserve.h"
#include "DesktopUserIdle.h"
#include "Diagnostics.h"
#include "FrenchToolkit.h"
#include "HouseStyle.h"
#include "JsonPreferences.h"
#include "LauncherCount.h"
#include "LockAwareOverlay.h"
#include "LockAwareUserIdle.h"
#include "MessageFilter.h"
#include "NotifierTrayItem.h"
#include "OnDemandChime.h"
#include "OnDemandHttp.h"
#include "OverlaySurface.h"
#include "OverlaySurfaceFactory.h"
#include "PlatformChoice.h"
#include "PortalAppearance.h"
#include "PortalLoginItem.h"
#include "ScreenFrame.h"
#include "ServerChannel.h"
#include "SessionBus.h"
#include "SessionLock.h"
#include "SharedInstance.h"
#include "SleepAwareUserIdle.h"
#include "StartupNotification.h"
#include "Symbols.h"
#include "TimerfdRunLoop.h"
#include "UnixSignals.h"
#include "UpdaterParts.h"
#include "UserFolders.h"
#include "WaylandDisplay.h"
#include "WindowPresence.h"
#include "X11Connection.h"
#include "X11LockWindow.h"

#include <QApplication>
#include <QByteArray>
#include <QThreadPool>
#include <QTimer>

#include <malloc.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// The largest icon, in pixels, that the first window needs. Drawing the next larger one takes longer than
/// all others together, and only high-resolution screens show it.
int largestIconAtStart(const QApplication &application)
{
    return application.devicePixelRatio() > 1 ? 256 : 128;
}

/// How long the compositor of a session that is just starting may take to answer. The platform is chosen for
/// the life of the process, and a wrong one costs the keyboard or the translucency of every break.
constexpr std::chrono::seconds slowestCompositor(10);

/// Returns the memory that startup has freed to the system; otherwise the process would keep it for days.
void releaseFreedMemory()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

/// The login item for the sandbox if the program runs in one, otherwise for the desktop.
std::unique_ptr<LoginItem> makeLoginItem()
{
    const QString applicationId = QStringLiteral(ORVANE_APP_ID);
    if (!PortalLoginItem::isNeeded()) {
        auto entry = std::make_unique<AutostartEntry>(AutostartEntry::standardParameters(applicationId));
        entry->renew();
        return entry;
    }
    auto item = std::make_unique<PortalLoginItem>(PortalLoginItem::standardParameters(applicationId));
    item->requestBackground();
    return item;
}

/// Makes Qt paint on one thread. It would split every curve among a pool of threads, which paints the ring no
/// faster, wakes up more often and takes descriptors that windows need. Older versions of Qt use the global
/// pool; newer ones have their own pool unless this variable is set before the first curve.
void limitPaintThreads()
{
    qputenv("QT_NO_GUI_THREADPOOL", "1");
    QThreadPool::globalInstance()->setMaxThreadCount(1);
}

QtMessageHandler toolkitMessageHandler;

/// Handles the toolkit's messages while it starts. Without a platform plugin it would abort, and leave a core
/// dump.
void endWithoutToolkit(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type != QtFatalMsg) {
        toolkitMessageHandler(type, context, message);
        return;
    }
    UpdaterParts::takeBackStart();
    std::fprintf(stderr,
                 CommandLine::isFrench() ? "orvanebreak : Qt ne démarre pas avec QT_QPA_PLATFORM « %s »\n"
                                         : "orvanebreak: Qt cannot start with QT_QPA_PLATFORM \"%s\"\n",
                 qgetenv("QT_QPA_PLATFORM").constData());
    std::_Exit(EXIT_FAILURE);
}

/// Runs the application until it quits and returns its exit status; sets `launcher` to the file that restarts
/// it.
int runApplication(QApplication &application, ApplicationService &service, const CommandLine &commandLine,
                   const QByteArray &startupId, std::filesystem::path &launcher)
{
    const Bundle bundle = Bundle::main();
    const std::filesystem::path preferencesFile = JsonPreferences::defaultFile();

    const DescriptorReserve descriptorReserve;
    TimerfdRunLoop runLoop;
    JsonPreferences preferences(preferencesFile);
    const DesktopUserIdle idle(runLoop);
    SleepAwareUserIdle sleepAwareIdle(idle, [&idle] { return idle.resolution(); });
    runLoop.onWakeUp = [&sleepAwareIdle] { sleepAwareIdle.noteSleep(); };
    OnDemandChime chime(bundle.soundsFolder());
    const std::unique_ptr<OverlaySurface> surface = makeOverlaySurface();
    const SessionLock sessionLock;
    const X11LockWindow lockWindow(X11Connection::ofToolkit());
    const auto isLocked = [&] { return sessionLock.isLocked() || lockWindow.isUp() || !surface->isDrawn(); };
    LockAwareUserIdle userIdle(sleepAwareIdle, isLocked);
    auto overlay = std::make_unique<LockAwareOverlay>(
        std::make_unique<BreakOverlayController>(*surface,
                                                 [] { return distinctScreens(QGuiApplication::screens()); }),
        isLocked);
    BreakEngine engine({runLoop, preferences, userIdle, chime, std::move(overlay)});
    const SharedInstance<BreakEngine> sharedEngine(engine);

    const PortalAppearance appearance;
    const std::unique_ptr<LoginItem> loginItem = makeLoginItem();
    const std::unique_ptr<WindowPresence> presence = makeWindowPresence();
    AlertQueue alerts(engine, *presence);
    OnDemandHttp http;
    CrashUpload crashUpload({http, preferences, bundle, SystemVersion::current(),
                             ServerChannel::builtInConfiguration().serverBase},
                            CrashUpload::Places::standard());
    const SharedInstance<CrashUpload> sharedCrashUpload(crashUpload);
    crashUpload.sendEarlyCrash();
    UpdaterParts updater(runLoop, http, alerts, bundle, preferencesFile.parent_path(),
                         &AppDelegate::openOrvaneLabs);
    ServerChannel channel({http, preferences, runLoop, bundle, SystemVersion::current()},
                          ServerChannel::builtInConfiguration());
    const SharedInstance<ServerChannel> sharedChannel(channel);
    CoreDumpExport coreDumpExport(runLoop, CoreDumpExport::ownCoreDumps(),
                                  crashUpload.places().systemReports);
    const auto installCrashReporter = [&] {
        const FileDate lastScan = crashUpload.lastScan();
        CrashReporter::install();
        coreDumpExport.start(lastScan, [&crashUpload] { crashUpload.sendSystemCrashReports(); });
    };
    LauncherCount launcherCount(QStringLiteral(ORVANE_APP_ID));
    AppDelegate delegate({engine, runLoop, preferences, *loginItem, updater.controller(), *presence, bundle,
                          channel, launcherCount, alerts, [] { return std::make_unique<NotifierTrayItem>(); },
                          installCrashReporter});

    service.onActivate = [&delegate] { delegate.showMainWindow(); };
    service.onLaunch = [&delegate] { delegate.showLaunchedWindow(); };
    service.onStartupId = endStartupNotification;
    service.onBreakNow = [&delegate] { delegate.breakNowPressed(); };
    const UnixSignals signalHandling([&delegate] { delegate.terminate(); });
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &delegate,
                     &AppDelegate::applicationWillTerminate);
    QTimer::singleShot(0, &delegate, &AppDelegate::applicationDidFinishLaunching);
    if (commandLine.isBreakNow)
        QTimer::singleShot(0, &delegate, &AppDelegate::breakNowPressed);
    QTimer::singleShot(AppDelegate::deferredWorkDelay, &application, [startupId] {
        // Qt does so for the first window, if one is shown.
        endStartupNotification(startupId);
        QApplication::setWindowIcon(Symbols::applicationIcon());
        BreakOverlayController::warmUp();
        releaseFreedMemory();
    });
    const int status = QApplication::exec();
    launcher = updater.launcher();
    return status;
}

/// Replaces this process with the program `launcher`. Returns only on failure, which it reports.
void relaunch(ApplicationService &service, const std::filesystem::path &launcher)
{
    service.release();
    std::string path = launcher.string();
    std::array<char *, 2> arguments = {path.data(), nullptr};
    execv(path.c_str(), arguments.data());
    std::fprintf(stderr, "orvanebreak: %s cannot be started: %s\n", path.c_str(), std::strerror(errno));
}

} // namespace

int main(int argc, char **argv)
{
    const CommandLine commandLine = CommandLine::parse(argc, argv);
    if (commandLine.exitStatus)
        return *commandLine.exitStatus;
    UserFolders::provideHome();
    if (installMessageFilter())
        dropWaylandMessages();
    if (commandLine.isDiagnostics) {
        printDiagnostics(argc, argv);
        return EXIT_SUCCESS;
    }
    const DisplayFacts display = findDisplayFacts(slowestCompositor);
    if (const std::optional<QString> problem = missingDisplay(display)) {
        UpdaterParts::takeBackStart();
        std::fprintf(stderr, "orvanebreak: %s\n", qPrintable(*problem));
        return EXIT_FAILURE;
    }
    std::optional<PlatformEnvironment> platformEnvironment(choosePlatform(display));
    preventSessionBusLaunch();
    // Read before the toolkit removes it from the environment.
    const QByteArray startupId = qgetenv("DESKTOP_STARTUP_ID");

    limitPaintThreads();
    // Keeps Qt from loading the desktop's theme plugin, which would load another toolkit.
    QApplication::setDesktopSettingsAware(false);
    // Set before the application is created, which would otherwise load the desktop's style first.
    QApplication::setStyle(new HouseStyle);
    toolkitMessageHandler = qInstallMessageHandler(endWithoutToolkit);
    QApplication application(argc, argv);
    qInstallMessageHandler(toolkitMessageHandler);
    platformEnvironment.reset();
    FrenchToolkit french;
    QApplication::installTranslator(&french);
    QApplication::setApplicationName(u"OrvaneBreak"_s);
    QApplication::setDesktopFileName(QStringLiteral(ORVANE_APP_ID));
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(Symbols::applicationIcon(largestIconAtStart(application)));

    ApplicationService service(QStringLiteral(ORVANE_APP_ID));
    // An action that the running instance does not know brings no window to the front.
    const QString actionWhenRestored = commandLine.isRestored ? u"restore"_s : QString();
    switch (service.start(commandLine.isBreakNow ? u"break-now"_s : actionWhenRestored)) {
    case ApplicationService::Start::First: {
        std::filesystem::path launcher;
        const int status = runApplication(application, service, commandLine, startupId, launcher);
        if (status != UpdaterParts::relaunchStatus)
            return status;
        relaunch(service, launcher);
        return EXIT_FAILURE;
    }
    case ApplicationService::Start::Second:
        UpdaterParts::takeBackStart();
        endStartupNotification(startupId);
        return EXIT_SUCCESS;
    case ApplicationService::Start::Failed:
        UpdaterParts::takeBackStart();
        break;
    }
    std::fputs(CommandLine::isFrench() ? "orvanebreak : une autre instance tourne et ne répond pas\n"
                                       : "orvanebreak: another instance is running and does not answer\n",
               stderr);
    return EXIT_FAILURE;
}
