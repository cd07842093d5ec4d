// SPDX-License-Identifier: GPL-3.0-or-later
// Prints where the program takes the idle time from on this desktop, and then for every line of standard
// input how many seconds ago the last input of any kind was. Where only a protocol with a time-out tells it,
// the time-out is a second.
#include "DesktopUserIdle.h"
#include "TimerfdRunLoop.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <unistd.h>

#include <algorithm>
#include <cstdio>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const TimerfdRunLoop runLoop;
    const DesktopUserIdle idle(runLoop, std::chrono::seconds(1));
    std::puts(userIdleSourceName(idle.source()));
    std::fflush(stdout);
    const QSocketNotifier commands(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&commands, &QSocketNotifier::activated, &application, [&] {
        char line = 0;
        if (read(STDIN_FILENO, &line, 1) != 1) {
            QCoreApplication::exit();
            return;
        }
        const InputIdleSeconds seconds = idle.secondsSinceLastInput();
        std::printf("%.3f\n", *std::min_element(seconds.begin(), seconds.end()));
        std::fflush(stdout);
    });
    return QCoreApplication::exec();
}
