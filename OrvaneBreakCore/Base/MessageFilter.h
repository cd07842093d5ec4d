// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>

/// What the program itself says in the log, on stderr.
Q_DECLARE_LOGGING_CATEGORY(orvaneLog)

/// Lets only the program's own messages and fatal ones through: libraries that complain about the desktop
/// they run on do not fill the user's journal. Call before the application object exists. Set
/// ORVANE_DEBUG_LOG to "1" to read them all; then nothing is done, and false returned.
bool installMessageFilter();
