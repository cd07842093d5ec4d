// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "XcbReply.h"

#include <vector>

/// Looks at `areas` of the root window every `intervalMilliseconds` for `durationMilliseconds`. Prints
/// "ready" after the first look and then a line "time index value" for each area at first and whenever it
/// changes: the colour as rrggbb for one pixel, otherwise a hash of the pixels.
void sampleScreen(xcb_connection_t *connection, const std::vector<PixelRectangle> &areas,
                  int durationMilliseconds, int intervalMilliseconds);

/// Prints "ready" and then a line "time window x y width height" for everything painted into one of the
/// windows.
void watchDamage(xcb_connection_t *connection, const std::vector<xcb_window_t> &windows,
                 int durationMilliseconds);

/// Prints one JSON object: focus, active window, client list, current desktop, whether a compositor runs,
/// pointer position, and every child of the root window from bottom to top.
void printDesktopState(xcb_connection_t *connection);
