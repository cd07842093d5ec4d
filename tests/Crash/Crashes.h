// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

/// Crashes the process in the way that `kind` names: "signal 11", "thread signal 11", "overflow", "thread
/// overflow", "deep", "nowhere", "data", "bad free", "corrupt heap", "throw exception", "throw string",
/// "throw int", "throw without reason", "throw private", "throw Latin-1", "throw much", "throw in thread",
/// "rethrow", "terminate", "two threads", "damaged stack", "after a child in the same memory". For "child"
/// and "terminate in child" only a child process crashes.
void crash(const std::string &kind);
