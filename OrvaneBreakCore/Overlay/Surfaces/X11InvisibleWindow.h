// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

class QRect;
struct xcb_connection_t;

/// A window without a picture, above all others from construction to destruction. Clicks on it, and keys
/// while it has the input focus, reach no program.
class X11InvisibleWindow
{
public:
    /// `connection` outlives the window. `place` is in pixels of the X screen.
    X11InvisibleWindow(xcb_connection_t *connection, const QRect &place);
    ~X11InvisibleWindow();
    X11InvisibleWindow(const X11InvisibleWindow &) = delete;
    X11InvisibleWindow &operator=(const X11InvisibleWindow &) = delete;

    [[nodiscard]] std::uint32_t id() const { return m_window; }

private:
    xcb_connection_t *m_connection;
    std::uint32_t m_window;
};
