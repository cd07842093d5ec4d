// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>

/// The id of the build that the linker wrote into a module; empty when it has none. `image` is its file, or
/// its first loaded segment, which holds the id. Safe in signal handlers.
[[nodiscard]] std::span<const unsigned char> buildIdOf(std::span<const char> image);
