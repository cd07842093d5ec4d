// SPDX-License-Identifier: GPL-3.0-or-later
#include "Crashes.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <sys/resource.h>

#include <algorithm>

namespace {

bool isOpen(const char *className)
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    return std::any_of(windows.begin(), windows.end(), [className](const QWidget *window) {
        return window->isVisible() && window->inherits(className);
    });
}

/// Crashes the program in a slot, in the way that ORVANE_TEST_CRASH names, as soon as a window of the class
/// ORVANE_TEST_CRASH_WINDOW is open. Does nothing without these variables.
void prepareCrash()
{
    const std::string kind = qgetenv("ORVANE_TEST_CRASH").toStdString();
    if (kind.empty())
        return;
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    auto *timer = new QTimer(QCoreApplication::instance());
    QObject::connect(timer, &QTimer::timeout, timer, [kind, window = qgetenv("ORVANE_TEST_CRASH_WINDOW")] {
        if (isOpen(window.constData()))
            crash(kind);
    });
    timer->start(1);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(prepareCrash)
