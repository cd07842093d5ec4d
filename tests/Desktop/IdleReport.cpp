// SPDX-License-Identifier: GPL-3.0-or-later
// Prints where the program takes the idle time from on this desktop, and then for every line of standard input how many
// seconds ago the last input of any kind was.
#include "Platform/Idle/UserIdleFactory.h"
#include "Platform/TimerfdRunLoop.h"

#include <QGuiApplication>
#include <QSocketNotifier>

#include <unistd.h>

#include <algorithm>
#include <cstdio>

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    const TimerfdRunLoop runLoop;
    const ChosenUserIdle idle = makeUserIdle(runLoop);
    std::puts(userIdleSourceName(idle.source));
    std::fflush(stdout);
    QSocketNotifier commands(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&commands, &QSocketNotifier::activated, &application, [&] {
        char line = 0;
        if (read(STDIN_FILENO, &line, 1) != 1)
            return QCoreApplication::exit();
        const InputIdleSeconds seconds = idle.userIdle->secondsSinceLastInput();
        std::printf("%.3f\n", *std::min_element(seconds.begin(), seconds.end()));
        std::fflush(stdout);
    });
    return QGuiApplication::exec();
}
