// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "NativePointers.h"

#include <xcb/xcb.h>

#include <string_view>

/// Shared operations on the toolkit's X connection.
namespace X11Connection {

/// The toolkit's own connection, or null if it does not run on X11. Needs the application object.
[[nodiscard]] xcb_connection_t *ofToolkit();

/// The atom with this name; XCB_ATOM_NONE if the connection is lost.
[[nodiscard]] xcb_atom_t atom(xcb_connection_t *connection, std::string_view name);

/// Whether the X server is part of a Wayland session (XWayland). Needs the application object.
[[nodiscard]] bool isInsideWayland(xcb_connection_t *connection);

} // namespace X11Connection
