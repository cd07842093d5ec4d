// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

struct wl_display;

struct WaylandDisplayDeleter
{
    void operator()(wl_display *display) const;
};

/// A connection to a compositor next to the toolkit's own.
using WaylandDisplayPointer = std::unique_ptr<wl_display, WaylandDisplayDeleter>;

/// Keeps the Wayland library from writing into the log itself.
void dropWaylandMessages();
