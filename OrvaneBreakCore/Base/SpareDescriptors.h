// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

/// Descriptors that are taken so that nobody else has them. Any thread.
namespace SpareDescriptors {

/// A descriptor of nothing; closed when the process may open no more.
[[nodiscard]] FileDescriptor make();

/// Whether the process may open the descriptors that a thread takes for a network exchange or a sound. The
/// libraries that do such things end a process in which they get none, or take those that windows need.
[[nodiscard]] bool sufficeForThread();

} // namespace SpareDescriptors
