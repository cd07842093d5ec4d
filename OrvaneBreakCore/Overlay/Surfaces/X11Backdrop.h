// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

class QScreen;
struct xcb_connection_t;

/// What X11 panels show in place of the desktop where the X server does not let it shine through: without a
/// compositing manager a window with an alpha channel is opaque.
namespace X11Backdrop {

/// Whether nobody blends windows and the screen can be read instead, which an X server inside a Wayland
/// session does not allow. `connection` is the toolkit's own. Needs the application object.
[[nodiscard]] bool isNeeded(xcb_connection_t *connection);

/// A picture of `screen` as it is now, in its pixels, darkened. Null where the screen cannot be read.
[[nodiscard]] QImage take(QScreen &screen);

/// `picture` with every channel at a quarter, opaque.
[[nodiscard]] QImage darkened(QImage picture);

} // namespace X11Backdrop
