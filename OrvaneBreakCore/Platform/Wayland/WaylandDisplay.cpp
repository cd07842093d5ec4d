// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Wayland/WaylandDisplay.h"

#include <wayland-client-core.h>

void WaylandDisplayDeleter::operator()(wl_display *display) const
{
    wl_display_disconnect(display);
}
