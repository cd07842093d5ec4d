// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <limits>

/// SystemCalls.cpp replaces the C library's functions that change or read the disk, and counts their calls. A
/// test can kill its process before any call, or let the disk be full or broken from any call on. For child
/// processes only: nothing is undone.
namespace SystemCalls {

/// The exit status of a process that `killBefore` ended.
inline constexpr int killedStatus = 99;

/// Ends the process at once before call number `call`, counted from 1.
void killBefore(int call);

/// For a disk that does not recover.
inline constexpr int forEver = std::numeric_limits<int>::max();

/// From call number `call` on, the next `failures` calls that need disk space fail with ENOSPC.
void fillDiskBefore(int call, int failures);

/// From call number `call` on, the next `failures` calls fail with EIO.
void breakDiskBefore(int call, int failures);

/// The number of calls since one of these functions was called.
int count();

} // namespace SystemCalls
