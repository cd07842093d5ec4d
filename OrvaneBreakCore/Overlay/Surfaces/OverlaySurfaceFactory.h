// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

class OverlaySurface;

/// The best surface for the toolkit's current platform. Called once; needs the application object.
[[nodiscard]] std::unique_ptr<OverlaySurface> makeOverlaySurface();
