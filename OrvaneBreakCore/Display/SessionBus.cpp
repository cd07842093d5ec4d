// SPDX-License-Identifier: GPL-3.0-or-later
#include "SessionBus.h"

#include <QFileInfo>
#include <QString>

using namespace Qt::StringLiterals;

void preventSessionBusLaunch()
{
    const QString runtimeFolder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const bool hasUserBus = !runtimeFolder.isEmpty() && QFileInfo::exists(runtimeFolder + u"/bus"_s);
    // An address of a kind that does not exist: connecting fails at once instead of launching a daemon.
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") && !hasUserBus)
        qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
}
