// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11InvisibleWindow.h"

#include <QRect>

#include <xcb/xcb.h>

X11InvisibleWindow::X11InvisibleWindow(xcb_connection_t *connection, const QRect &place)
    : m_connection(connection)
    , m_window(xcb_generate_id(connection))
{
    // Input that nobody selects would otherwise go on to the root window and the window manager.
    constexpr std::uint32_t kept = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
                                   XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                   XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_BUTTON_MOTION;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const std::uint32_t values[] = {1, kept};
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, m_window, root, static_cast<std::int16_t>(place.x()),
                      static_cast<std::int16_t>(place.y()), static_cast<std::uint16_t>(place.width()),
                      static_cast<std::uint16_t>(place.height()), 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_DONT_PROPAGATE, values);
    xcb_map_window(connection, m_window);
    xcb_flush(connection);
}

X11InvisibleWindow::~X11InvisibleWindow()
{
    xcb_destroy_window(m_connection, m_window);
    xcb_flush(m_connection);
}
