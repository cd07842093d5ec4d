// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

/// Crashes the process in the way that `kind` names: "signal 11", "thread signal 11", "overflow", "thread
/// overflow", "deep", "nowhere", "bad free", "corrupt heap", "throw exception", "throw string", "throw int",
/// "throw without reason", "throw private", "throw in thread", "rethrow", "terminate", "two threads",
/// "damaged stack".
void crash(const std::string &kind);
