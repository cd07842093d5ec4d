// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

/// Looks for a display before the toolkit does, which would end the process with a core dump where there is
/// none. Connects and disconnects at once. Returns what is wrong in one line of English, or nothing when the
/// program can start; with a platform named in QT_QPA_PLATFORM only that one is tried, and one that needs no
/// display always passes.
[[nodiscard]] std::optional<QString> missingDisplay();

/// Whether an X server takes connections at DISPLAY. Connects and disconnects at once.
[[nodiscard]] bool isX11Reachable();
