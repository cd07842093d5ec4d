// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandDisplay.h"

#include <wayland-client-core.h>

namespace {

void dropMessage(const char * /*format*/, va_list /*arguments*/) {}

} // namespace

void dropWaylandMessages()
{
    wl_log_set_handler_client(dropMessage);
}
