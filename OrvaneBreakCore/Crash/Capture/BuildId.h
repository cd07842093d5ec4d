// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <link.h>

#include <span>

/// The id of the build that the linker wrote into the loaded module `map`, whose file is mapped at `image`;
/// empty when it has none. Safe in signal handlers.
[[nodiscard]] std::span<const unsigned char> buildIdOf(const link_map &map, const void *image);
