// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11KeyboardFocus.h"

#include "X11Connection.h"

#include <QGuiApplication>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// The focus is refused until the window is viewable, and a window manager that sees it move may give it back
/// once.
constexpr std::chrono::milliseconds focusRetries[] = {0ms, 60ms, 200ms};

/// When a Wayland compositor may have learnt that there is a surface behind the X window with the focus.
constexpr std::chrono::milliseconds insistences[] = {100ms, 250ms, 500ms, 1000ms};

/// How often a break takes the focus back from a program that keeps taking it, before it lets that program
/// have it.
constexpr int focusAttempts = 20;

} // namespace

X11KeyboardFocus::X11KeyboardFocus(xcb_connection_t *connection)
    : m_connection(connection)
    , m_isInsideWayland(X11Connection::isInsideWayland(connection))
{
}

void X11KeyboardFocus::begin()
{
    m_windows.clear();
    m_keyboardWindow = 0;
    m_previousFocus = focusedWindow();
    m_attemptsLeft = focusAttempts;
    if (m_isInsideWayland)
        showAnchor();
    // Queued: the report comes while the toolkit is still handling the change.
    m_focusWatch = connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &X11KeyboardFocus::takeBack,
                           Qt::QueuedConnection);
}

void X11KeyboardFocus::add(std::uint32_t window)
{
    m_windows.push_back(window);
}

void X11KeyboardFocus::hold(std::uint32_t window)
{
    m_keyboardWindow = window;
    for (const auto delay : focusRetries)
        QTimer::singleShot(delay, this, &X11KeyboardFocus::takeBack);
    for (const auto delay : insistences) {
        if (m_isInsideWayland)
            QTimer::singleShot(delay, this, &X11KeyboardFocus::insist);
    }
}

void X11KeyboardFocus::end()
{
    disconnect(m_focusWatch);
    if (std::exchange(m_keyboardWindow, 0) != 0 && isOurs(focusedWindow()))
        giveBack();
    m_anchor.reset();
}

void X11KeyboardFocus::giveBack()
{
    // The compositor's own window, which had the focus for a program that is none of X, does not pass it on.
    // When a window of the ordinary kind goes while it has the focus, the one before it is next.
    if (m_anchor && !isManaged(m_previousFocus))
        setFocus(static_cast<std::uint32_t>(m_anchor->winId()));
    else if (m_previousFocus <= XCB_INPUT_FOCUS_POINTER_ROOT || isViewable(m_previousFocus))
        setFocus(m_previousFocus);
}

void X11KeyboardFocus::takeBack()
{
    if (m_keyboardWindow == 0)
        return;
    const std::uint32_t focused = focusedWindow();
    if (isOurs(focused) || m_attemptsLeft == 0)
        return;
    --m_attemptsLeft;
    // Whoever was given the focus meanwhile gets it back at the end.
    if (focused > XCB_INPUT_FOCUS_POINTER_ROOT)
        m_previousFocus = focused;
    setFocus(m_keyboardWindow);
}

/// A compositor that was told of the focus before it knew the window's surface has left the keyboard where it
/// was. It looks again when the focus moves, which it does here between two windows of ours.
void X11KeyboardFocus::insist()
{
    if (!m_anchor || m_keyboardWindow == 0 || !isOurs(focusedWindow()))
        return;
    setFocus(static_cast<std::uint32_t>(m_anchor->winId()));
    setFocus(m_keyboardWindow);
}

/// A window that the window manager knows, unlike the panels, and that nobody sees.
void X11KeyboardFocus::showAnchor()
{
    m_anchor = std::make_unique<QWidget>(nullptr, Qt::Tool | Qt::FramelessWindowHint);
    m_anchor->setAttribute(Qt::WA_TranslucentBackground);
    m_anchor->setAttribute(Qt::WA_ShowWithoutActivating);
    m_anchor->resize(1, 1);
    m_anchor->show();
    add(static_cast<std::uint32_t>(m_anchor->winId()));
}

std::uint32_t X11KeyboardFocus::focusedWindow() const
{
    const XcbReply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    return reply ? reply->focus : xcb_window_t(XCB_WINDOW_NONE);
}

bool X11KeyboardFocus::isOurs(std::uint32_t window) const
{
    return std::find(m_windows.begin(), m_windows.end(), window) != m_windows.end();
}

bool X11KeyboardFocus::isViewable(std::uint32_t window) const
{
    xcb_generic_error_t *error = nullptr;
    const XcbReply<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
        m_connection, xcb_get_window_attributes(m_connection, window), &error));
    std::free(error);
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool X11KeyboardFocus::isManaged(std::uint32_t window) const
{
    const xcb_atom_t state = X11Connection::atom(m_connection, "WM_STATE");
    xcb_generic_error_t *error = nullptr;
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection, xcb_get_property(m_connection, 0, window, state, XCB_GET_PROPERTY_TYPE_ANY, 0, 1),
        &error));
    std::free(error);
    return reply && reply->type != XCB_ATOM_NONE;
}

void X11KeyboardFocus::setFocus(std::uint32_t window) const
{
    // Checked and thrown away: a window that went meanwhile is no reason for the toolkit to print an X error.
    const xcb_void_cookie_t cookie =
        xcb_set_input_focus_checked(m_connection, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    std::free(xcb_request_check(m_connection, cookie));
}
