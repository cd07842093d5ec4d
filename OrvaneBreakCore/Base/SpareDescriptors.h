// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

/// Descriptors that are opened only to occupy them. Any thread.
namespace SpareDescriptors {

/// A descriptor without a file; no descriptor when the process has reached its limit.
[[nodiscard]] FileDescriptor make();

/// Whether the process can open the descriptors that a thread needs for a network exchange or a sound.
/// Without them the libraries would abort the process, or take the descriptors that windows need.
[[nodiscard]] bool sufficeForThread();

} // namespace SpareDescriptors
