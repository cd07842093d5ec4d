// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <limits>

/// The system calls by which this program changes a disk, or reads what is on it, counted from now
/// on, so that a test can end the process before any of them, or have the disk full or broken from then on.
/// Linking SystemCalls.cpp replaces the C library's own functions. For a child process: nothing is ever
/// undone.
namespace SystemCalls {

/// The status of a process that was ended.
inline constexpr int killedStatus = 99;

/// Ends the process at once before call number `call`, counted from 1.
void killBefore(int call);

/// A number of failures without an end.
inline constexpr int forEver = std::numeric_limits<int>::max();

/// Lets call number `call` and those after it that need space fail, `failures` in all, because there is none.
void fillDiskBefore(int call, int failures);

/// Lets call number `call` and those after it fail, `failures` in all, whatever they do.
void breakDiskBefore(int call, int failures);

/// The number of calls since.
int count();

} // namespace SystemCalls
