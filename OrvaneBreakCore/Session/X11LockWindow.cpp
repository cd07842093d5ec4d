// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11LockWindow.h"

#include "X11Connection.h"

#include <algorithm>
#include <vector>

namespace {

X11Client clientBeside(xcb_connection_t *toolkit)
{
    if (!toolkit || X11Connection::isInsideWayland(toolkit))
        return X11Client(nullptr);
    return X11Client::toDisplay();
}

/// The requests about one window, sent together with those about all others.
struct WindowQuestion
{
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
};

/// In pixels, of the part of the window that is inside the screen.
std::int64_t areaOnScreen(const xcb_get_geometry_reply_t &window, const xcb_screen_t &screen)
{
    const int right = std::min<int>(window.x + window.width, screen.width_in_pixels);
    const int bottom = std::min<int>(window.y + window.height, screen.height_in_pixels);
    const int width = std::max(right - std::max<int>(window.x, 0), 0);
    const int height = std::max(bottom - std::max<int>(window.y, 0), 0);
    return std::int64_t(width) * height;
}

} // namespace

X11LockWindow::X11LockWindow(xcb_connection_t *toolkit)
    : m_client(clientBeside(toolkit))
{
    const xcb_screen_t *screen = m_client.screen();
    if (!screen)
        return;
    m_toolkitBase = xcb_get_setup(toolkit)->resource_id_base;
    m_toolkitMask = xcb_get_setup(toolkit)->resource_id_mask;
    m_hidden = xcb_generate_id(m_client.connection());
    xcb_create_window(m_client.connection(), 0, m_hidden, screen->root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
}

bool X11LockWindow::isUp() const
{
    if (!m_client.isConnected())
        return false;
    const X11Client::Deadline deadline = X11Client::usualDeadline();
    return isInputGrabbed(deadline) && isCovered(deadline);
}

bool X11LockWindow::isInputGrabbed(X11Client::Deadline deadline) const
{
    // A hidden window is never given a grab: the server replies whether another client has one, and changes
    // nothing.
    xcb_connection_t *connection = m_client.connection();
    const auto keyboardCookie = xcb_grab_keyboard(connection, 0, m_hidden, XCB_CURRENT_TIME,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const auto pointerCookie =
        xcb_grab_pointer(connection, 0, m_hidden, 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                         XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME);
    const auto keyboard = m_client.reply<xcb_grab_keyboard_reply_t>(keyboardCookie.sequence, deadline);
    const auto pointer = m_client.reply<xcb_grab_pointer_reply_t>(pointerCookie.sequence, deadline);
    return keyboard && keyboard->status == XCB_GRAB_STATUS_ALREADY_GRABBED && pointer &&
           pointer->status == XCB_GRAB_STATUS_ALREADY_GRABBED;
}

bool X11LockWindow::isCovered(X11Client::Deadline deadline) const
{
    xcb_connection_t *connection = m_client.connection();
    const xcb_screen_t *screen = m_client.screen();
    if (!screen)
        return false;
    const auto treeCookie = xcb_query_tree(connection, screen->root);
    const auto tree = m_client.reply<xcb_query_tree_reply_t>(treeCookie.sequence, deadline);
    if (!tree)
        return false;
    std::vector<WindowQuestion> questions;
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    for (int index = 0; index < xcb_query_tree_children_length(tree.get()); ++index) {
        if (!isToolkitWindow(children[index]))
            questions.push_back({xcb_get_window_attributes(connection, children[index]),
                                 xcb_get_geometry(connection, children[index])});
    }
    std::int64_t covered = 0;
    for (const WindowQuestion &question : questions) {
        const auto attributes =
            m_client.reply<xcb_get_window_attributes_reply_t>(question.attributes.sequence, deadline);
        const auto geometry = m_client.reply<xcb_get_geometry_reply_t>(question.geometry.sequence, deadline);
        if (attributes && geometry && attributes->override_redirect != 0 &&
            attributes->map_state == XCB_MAP_STATE_VIEWABLE)
            covered += areaOnScreen(*geometry, *screen);
    }
    return covered * 2 >= std::int64_t(screen->width_in_pixels) * screen->height_in_pixels;
}

bool X11LockWindow::isToolkitWindow(xcb_window_t window) const
{
    return (window & ~m_toolkitMask) == m_toolkitBase;
}
