// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

class OverlaySurface;

/// The best surface for the platform that the toolkit runs on. Called once, after the application object
/// exists.
[[nodiscard]] std::unique_ptr<OverlaySurface> makeOverlaySurface();
