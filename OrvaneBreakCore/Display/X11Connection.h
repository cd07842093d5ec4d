// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

/// What the users of the toolkit's X connection have in common.
namespace X11Connection {

/// A reply of the X server's.
template <typename Reply>
using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

/// The toolkit's own connection, or null where it does not run on X11. Needs the application object.
[[nodiscard]] xcb_connection_t *ofToolkit();

/// The atom with this name; None when the connection is lost.
[[nodiscard]] xcb_atom_t atom(xcb_connection_t *connection, std::string_view name);

/// Whether the X server runs inside a Wayland session, for the programs of the other kind. Needs the
/// application object.
[[nodiscard]] bool isInsideWayland(xcb_connection_t *connection);

} // namespace X11Connection
