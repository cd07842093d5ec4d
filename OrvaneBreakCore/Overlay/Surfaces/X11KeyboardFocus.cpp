// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11KeyboardFocus.h"

#include "X11Connection.h"

#include <QGuiApplication>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// A window manager that sees the focus move may give it back once.
constexpr std::chrono::milliseconds focusRetries[] = {0ms, 60ms, 200ms};

/// When a Wayland compositor may know the surface of the X window with the focus, and then how often it is
/// reminded of that window, because X11 does not tell of a menu or a switcher of the compositor's own that
/// takes the keyboard and forgets whom it took it from.
constexpr std::chrono::milliseconds firstRefocus = 100ms;
constexpr std::chrono::milliseconds refocusInterval = 500ms;

/// How often a break takes the focus back from a program that keeps taking it, before it lets that program
/// have it.
constexpr int focusAttempts = 20;

constexpr std::chrono::milliseconds releaseInterval = 10ms;

/// A key that is down for longer is stuck, or its release was lost.
constexpr std::chrono::milliseconds longestHold = 5s;

} // namespace

X11KeyboardFocus::X11KeyboardFocus(xcb_connection_t *connection)
    : m_connection(connection)
    , m_isInsideWayland(X11Connection::isInsideWayland(connection))
{
    m_releaseTimer.setInterval(releaseInterval);
    m_releaseTimer.callOnTimeout([this] {
        if (!isDown(m_heldKey) || m_releaseDeadline.hasExpired())
            letGo();
    });
    m_refocusTimer.callOnTimeout([this] {
        refocus();
        m_refocusTimer.setInterval(
            std::min<std::chrono::milliseconds>(2 * m_refocusTimer.intervalAsDuration(), refocusInterval));
    });
}

X11KeyboardFocus::~X11KeyboardFocus()
{
    end(0);
    letGo();
}

void X11KeyboardFocus::begin()
{
    letGo();
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
    takeBack();
    for (const auto delay : focusRetries)
        QTimer::singleShot(delay, this, &X11KeyboardFocus::takeBack);
    if (m_isInsideWayland)
        m_refocusTimer.start(firstRefocus);
}

void X11KeyboardFocus::end(std::uint32_t heldKey)
{
    disconnect(m_focusWatch);
    m_refocusTimer.stop();
    const bool hadKeyboard = std::exchange(m_keyboardWindow, 0) != 0;
    if (hadKeyboard && isDown(heldKey) && isOurs(focusedWindow()))
        waitForRelease(heldKey);
    else
        letGo();
}

/// The server repeats a held key for whichever window has the focus.
void X11KeyboardFocus::waitForRelease(std::uint32_t key)
{
    m_heldKey = key;
    if (!m_anchor) {
        m_keyCatcher = std::make_unique<X11InvisibleWindow>(m_connection, QRect(0, 0, 1, 1));
        add(m_keyCatcher->id());
    }
    setFocus(m_anchor ? static_cast<std::uint32_t>(m_anchor->winId()) : m_keyCatcher->id());
    m_releaseDeadline.setRemainingTime(longestHold);
    m_releaseTimer.start();
}

/// Ends the break's hold of the keyboard. Does nothing the second time.
void X11KeyboardFocus::letGo()
{
    m_releaseTimer.stop();
    if (!m_windows.empty() && isOurs(focusedWindow()))
        giveBack();
    m_windows.clear();
    m_keyCatcher.reset();
    m_anchor.reset();
}

void X11KeyboardFocus::giveBack()
{
    // While a native Wayland program has the keyboard, the compositor's own X window has the focus, and
    // giving it back changes nothing. When a managed window with the focus goes, the compositor activates the
    // window before it.
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
    if ((isOurs(focused) && !isElsewhereForToolkit()) || m_attemptsLeft == 0)
        return;
    --m_attemptsLeft;
    // The window that took the focus gets it back at the end.
    if (focused > XCB_INPUT_FOCUS_POINTER_ROOT && !isOurs(focused))
        m_previousFocus = focused;
    // Otherwise the server reports no change to the toolkit.
    if (isOurs(focused))
        setFocus(XCB_INPUT_FOCUS_POINTER_ROOT);
    setFocus(m_keyboardWindow);
}

/// The toolkit sends keys to the window that it activated last, for example behind a dialog that has closed,
/// whatever window the server sends them to.
bool X11KeyboardFocus::isElsewhereForToolkit() const
{
    const QWindow *window = QGuiApplication::focusWindow();
    return window && window->handle() && !isOurs(static_cast<std::uint32_t>(window->winId()));
}

/// A compositor that learns of the focus before it knows the window's surface leaves the keyboard where it
/// is, and so does one whose own menu has had it. It looks again when the focus moves, here between two
/// windows of this program.
void X11KeyboardFocus::refocus()
{
    if (!m_anchor || m_keyboardWindow == 0 || !isOurs(focusedWindow()))
        return;
    const auto anchor = static_cast<std::uint32_t>(m_anchor->winId());
    setFocus(anchor);
    setFocus(m_keyboardWindow);
    // It ignores a move that comes without any request of its own since it last moved the focus. Until the
    // next time, it reads this property again.
    xcb_change_property(m_connection, XCB_PROP_MODE_APPEND, anchor, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS, 32,
                        0, nullptr);
    xcb_flush(m_connection);
}

/// A window that the window manager manages, unlike the panels, and that nobody sees.
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

/// `key` is a key code as in the server's key events.
bool X11KeyboardFocus::isDown(std::uint32_t key) const
{
    const XcbReply<xcb_query_keymap_reply_t> reply(
        xcb_query_keymap_reply(m_connection, xcb_query_keymap(m_connection), nullptr));
    return reply && key != 0 && key / 8 < std::size(reply->keys) &&
           (reply->keys[key / 8] & (1U << (key % 8))) != 0;
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
    // Checked so that the toolkit prints no X error about a window that has gone meanwhile.
    const xcb_void_cookie_t cookie =
        xcb_set_input_focus_checked(m_connection, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    std::free(xcb_request_check(m_connection, cookie));
}
