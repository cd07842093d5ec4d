// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>

/// The program's own log messages, which go to stderr.
Q_DECLARE_LOGGING_CATEGORY(orvaneLog)

/// Logs only the program's own messages and fatal ones, so that library warnings about the desktop do not
/// fill the user's journal. Called before the application object exists. Does nothing and returns false when
/// ORVANE_DEBUG_LOG is "1": then everything is logged.
bool installMessageFilter();
