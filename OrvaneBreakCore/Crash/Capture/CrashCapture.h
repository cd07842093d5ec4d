// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

/// Writes one report when the process dies of an exception that nobody catches or of SIGABRT, SIGSEGV,
/// SIGILL, SIGBUS, SIGFPE or SIGTRAP, on whatever thread. The process then ends as it would have without it.
///
/// The report replaces the one before: its message, a line "---", and 30 lines of the call stack at most, in
/// a file that its owner alone can read. It is lost without notice when it cannot be written.
namespace CrashCapture {

/// Prepares the folder of `file`, and watches from now on. Called once, on the main thread, which then has a
/// stack of its own for signal handlers; another thread that is to report the overflow of its stack needs a
/// SignalStack.
void install(const std::filesystem::path &file);

} // namespace CrashCapture
