// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

/// Writes a report when an uncaught exception, SIGABRT, SIGSEGV, SIGILL, SIGBUS, SIGFPE or SIGTRAP ends the
/// process, on any thread. The process then ends as it would without the report. A child process that has not
/// started another program writes none.
///
/// The report replaces the previous one: a message, a line "---" and at most 30 lines of the call stack, in a
/// file with the mode 0600. A report that cannot be written is lost silently.
namespace CrashCapture {

/// Creates the folder of `file` and installs the handlers. Called once, on the main thread, which gets an
/// alternate signal stack; any other thread needs a SignalStack to report the overflow of its stack.
void install(const std::filesystem::path &file);

} // namespace CrashCapture
