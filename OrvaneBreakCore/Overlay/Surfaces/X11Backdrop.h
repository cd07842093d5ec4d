// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

class QScreen;
struct xcb_connection_t;

/// The picture of the desktop that X11 panels show if there is no compositing manager: without one, a window
/// with an alpha channel is opaque.
namespace X11Backdrop {

/// Whether there is no compositing manager and the screen can be read, which an X server inside a Wayland
/// session does not allow. `connection` is the toolkit's own. Needs the application object.
[[nodiscard]] bool isNeeded(xcb_connection_t *connection);

/// A picture of `screen` as it is now, in its pixels and with its device pixel ratio, darkened. Null if the
/// screen cannot be read.
[[nodiscard]] QImage take(QScreen &screen);

/// `picture` with a quarter of each channel's value, opaque.
[[nodiscard]] QImage darkened(QImage picture);

} // namespace X11Backdrop
