// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/AppDelegate.h"
#include "Engine/BreakEngine.h"
#include "Engine/SharedInstance.h"
#include "Overlay/BreakOverlayController.h"
#include "Platform/Idle/UserIdleFactory.h"
#include "Platform/Overlay/OverlaySurfaceFactory.h"
#include "Platform/OverlaySurface.h"
#include "Platform/Preferences/JsonPreferences.h"
#include "Platform/Process/Bundle.h"
#include "Platform/Process/DisplayProbe.h"
#include "Platform/Process/MessageFilter.h"
#include "Platform/Process/SessionBus.h"
#include "Platform/Process/UnixSignals.h"
#include "Platform/Sound/CanberraChime.h"
#include "Platform/TimerfdRunLoop.h"
#include "Platform/Tray/NotifierTrayItem.h"
#include "Visuals/Symbols.h"

#include <QApplication>
#include <QThreadPool>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    installMessageFilter();
    if (const std::optional<QString> problem = missingDisplay()) {
        std::fprintf(stderr, "orvanebreak: %s\n", qPrintable(*problem));
        return EXIT_FAILURE;
    }
    preventSessionBusLaunch();

    QApplication application(argc, argv);
    QApplication::setApplicationName(u"OrvaneBreak"_s);
    QApplication::setDesktopFileName(QStringLiteral(ORVANE_APP_ID));
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(Symbols::applicationIcon());
    // The raster engine hands every curve to this pool, piece by piece. One thread paints the ring as fast as
    // many would, and wakes up less.
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    const Bundle bundle = Bundle::main();

    TimerfdRunLoop runLoop;
    JsonPreferences preferences(JsonPreferences::defaultFile());
    const ChosenUserIdle idle = makeUserIdle(runLoop);
    CanberraChime chime(bundle.soundsFolder());
    const std::unique_ptr<OverlaySurface> surface = makeOverlaySurface();
    BreakEngine engine({runLoop, preferences, *idle.userIdle, chime,
                        std::make_unique<BreakOverlayController>(*surface, &QGuiApplication::screens)});
    const SharedInstance<BreakEngine> sharedEngine(engine);

    AppDelegate delegate({engine, [] { return std::make_unique<NotifierTrayItem>(); }});
    const UnixSignals signalHandling([&delegate] { delegate.terminate(); });
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &delegate,
                     &AppDelegate::applicationWillTerminate);
    QTimer::singleShot(0, &delegate, &AppDelegate::applicationDidFinishLaunching);
    QTimer::singleShot(0, &application, &BreakOverlayController::warmUp);
    return QApplication::exec();
}
