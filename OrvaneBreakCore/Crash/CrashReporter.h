// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Reports what goes fatally wrong. The user never sees any of it. User-interface thread only.
struct CrashReporter
{
    CrashReporter() = delete;

    /// Sends the report that the process before has left and the new ones that the system keeps, then watches
    /// for the end of this one. Called once, at launch, before anything else that could fail; the shared
    /// CrashUpload outlives the event loop.
    static void install();

    /// Sends `message` and the first 15 calls that this thread is in as an error; writes nothing to the disk.
    static void reportError(const QString &message);
};
