// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The system calls by which this program changes a disk, or reads what it has downloaded, counted from now
/// on, so that a test can end the process before any of them, or have the disk full or broken from then on.
/// Linking SystemCalls.cpp replaces the C library's own functions. For a child process: nothing is ever
/// undone.
namespace SystemCalls {

/// The status of a process that was ended.
inline constexpr int killedStatus = 99;

/// Ends the process at once before call number `call`, counted from 1.
void killBefore(int call);

/// Lets call number `call` and, unless `isOnce`, all after it that need space fail because there is none.
void fillDiskBefore(int call, bool isOnce);

/// Lets call number `call` and, unless `isOnce`, all after it fail, whatever they do.
void breakDiskBefore(int call, bool isOnce);

/// The number of calls since.
int count();

} // namespace SystemCalls
