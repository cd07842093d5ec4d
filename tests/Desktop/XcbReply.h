// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Display/NativePointers.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <string>
#include <string_view>

/// A rectangle on the root window or inside a window, in pixels.
struct PixelRectangle
{
    std::int16_t x = 0;
    std::int16_t y = 0;
    std::uint16_t width = 1;
    std::uint16_t height = 1;
};

/// Reads "x,y" or "x,y,width,height"; throws when the text is none of them.
[[nodiscard]] PixelRectangle parseRectangle(const std::string &text);

/// Nanoseconds of the monotonic clock, comparable between processes.
[[nodiscard]] std::int64_t monotonicNanoseconds();

/// The root window of the first screen.
[[nodiscard]] xcb_window_t rootWindow(xcb_connection_t *connection);

/// The X server's number for a name; none when the connection is broken.
[[nodiscard]] xcb_atom_t atomNamed(xcb_connection_t *connection, std::string_view name);
