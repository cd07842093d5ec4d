// SPDX-License-Identifier: GPL-3.0-or-later
// Prints where the program takes the idle time from on this desktop, and then for every line of standard
// input how many seconds ago the last input of any kind was. Where only a protocol with a time-out tells it,
// the time-out is a second.
#include "TimerfdRunLoop.h"
#include "UserIdleFactory.h"
#include "WaylandUserIdle.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <unistd.h>
#include <wayland-client-core.h>

#include <algorithm>
#include <cstdio>

namespace {

std::unique_ptr<UserIdle> withShortTimeout(const RunLoop &runLoop, WaylandIdleProtocol protocol)
{
    return std::make_unique<WaylandUserIdle>(runLoop, WaylandDisplayPointer(wl_display_connect(nullptr)),
                                             protocol, std::chrono::seconds(1));
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const TimerfdRunLoop runLoop;
    ChosenUserIdle idle = makeUserIdle(runLoop);
    if (idle.source == UserIdleSource::ExtIdleNotify)
        idle.userIdle = withShortTimeout(runLoop, WaylandIdleProtocol::ExtIdleNotify);
    else if (idle.source == UserIdleSource::KdeIdle)
        idle.userIdle = withShortTimeout(runLoop, WaylandIdleProtocol::KdeIdle);
    std::puts(userIdleSourceName(idle.source));
    std::fflush(stdout);
    const QSocketNotifier commands(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&commands, &QSocketNotifier::activated, &application, [&] {
        char line = 0;
        if (read(STDIN_FILENO, &line, 1) != 1) {
            QCoreApplication::exit();
            return;
        }
        const InputIdleSeconds seconds = idle.userIdle->secondsSinceLastInput();
        std::printf("%.3f\n", *std::min_element(seconds.begin(), seconds.end()));
        std::fflush(stdout);
    });
    return QCoreApplication::exec();
}
