// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Reports crashes and errors without showing anything to the user. User-interface thread only.
struct CrashReporter
{
    CrashReporter() = delete;

    /// Sends the previous process's crash report and the system's new reports, then installs CrashCapture.
    /// Called once, at launch, before anything else that can fail; the shared CrashUpload outlives the event
    /// loop.
    static void install();

    /// Sends `message` and the innermost 15 calls of this thread as an error. Writes nothing to the disk.
    static void reportError(const QString &message);
};
