// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <QSocketNotifier>

#include <functional>

/// Turns the first SIGTERM, SIGINT or SIGHUP into a call of `onTerminate` on the user-interface thread. A
/// second one ends the process at once, as it would without this class. SIGXFSZ is ignored, so that a write
/// beyond a file size limit fails like a write to a full disk. One instance at a time.
class UnixSignals
{
public:
    explicit UnixSignals(std::function<void()> onTerminate);
    ~UnixSignals();
    UnixSignals(const UnixSignals &) = delete;
    UnixSignals &operator=(const UnixSignals &) = delete;

private:
    FileDescriptor m_wakeUp;
    QSocketNotifier m_notifier;
};
