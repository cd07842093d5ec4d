// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

/// Looks for a display before the toolkit does, which would abort the process if there is none. Connects and
/// disconnects at once. Returns an error message of one line in English, or nothing if the program can start.
/// If QT_QPA_PLATFORM names a platform, only that one is tried; one that needs no display always passes.
[[nodiscard]] std::optional<QString> missingDisplay();

/// Whether an X server accepts connections at DISPLAY. Connects and disconnects at once.
[[nodiscard]] bool isX11Reachable();
