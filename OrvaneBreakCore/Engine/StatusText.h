// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"

#include <QString>

#include <optional>

/// The state of the engine in one line of French. Minutes left are rounded up, so the figure never
/// understates the wait, and are at least 1; from 60 on they are written as hours and two-digit minutes.
[[nodiscard]] QString breakStatusText(bool isOnBreak, bool isActive, std::optional<Date> nextBreakDate,
                                      Date now);
