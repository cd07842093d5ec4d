// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Overlay/X11OverlaySurface.h"

#include "Platform/Overlay/X11Backdrop.h"

#include <QGuiApplication>
#include <QPalette>
#include <QScreen>
#include <QTimer>
#include <QWindow>

#include <xcb/xcb.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// The focus is refused until the window is viewable, and a window manager that sees it move may give it back
/// once.
constexpr std::chrono::milliseconds focusRetries[] = {0ms, 60ms, 200ms};

/// How often a break takes the focus back from a program that keeps taking it, before it lets that program
/// have it.
constexpr int focusAttempts = 20;

template <typename Reply>
using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

} // namespace

X11OverlaySurface::X11OverlaySurface(xcb_connection_t *connection)
    : m_connection(connection)
{
}

void X11OverlaySurface::begin()
{
    m_windows.clear();
    m_keyboardWindow = 0;
    m_previousFocus = focusedWindow();
    m_attemptsLeft = focusAttempts;
    takeBackdrops();
    m_focusWatch =
        connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &X11OverlaySurface::focusMoved);
}

void X11OverlaySurface::present(QWidget &panel, QScreen &screen, bool takesKeyboard)
{
    panel.setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                         Qt::BypassWindowManagerHint);
    if (const auto backdrop = m_backdrops.extract(&screen)) {
        QPalette palette = panel.palette();
        palette.setBrush(QPalette::Window, backdrop.mapped());
        panel.setPalette(palette);
    }
    panel.setScreen(&screen);
    panel.setGeometry(screen.geometry());
    panel.show();
    const auto window = static_cast<std::uint32_t>(panel.winId());
    m_windows.push_back(window);
    if (!takesKeyboard)
        return;
    m_keyboardWindow = window;
    for (const auto delay : focusRetries)
        QTimer::singleShot(delay, &panel, [this] { holdFocus(); });
}

void X11OverlaySurface::end()
{
    disconnect(m_focusWatch);
    m_backdrops.clear();
    const std::uint32_t keyboardWindow = std::exchange(m_keyboardWindow, 0);
    if (keyboardWindow == 0 || !isOurs(focusedWindow()))
        return;
    const bool isSpecial = m_previousFocus <= XCB_INPUT_FOCUS_POINTER_ROOT;
    if (isSpecial || isViewable(m_previousFocus))
        setFocus(m_previousFocus);
}

/// All before the first panel is shown: screens may overlap.
void X11OverlaySurface::takeBackdrops()
{
    m_backdrops.clear();
    if (!X11Backdrop::isNeeded(m_connection))
        return;
    for (QScreen *screen : QGuiApplication::screens()) {
        QImage picture = X11Backdrop::take(*screen);
        if (!picture.isNull())
            m_backdrops.emplace(screen, std::move(picture));
    }
}

void X11OverlaySurface::holdFocus()
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

void X11OverlaySurface::focusMoved()
{
    // Queued: the report comes while the toolkit is still handling the change.
    QMetaObject::invokeMethod(this, &X11OverlaySurface::holdFocus, Qt::QueuedConnection);
}

std::uint32_t X11OverlaySurface::focusedWindow() const
{
    const ReplyPointer<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr), &std::free);
    return reply ? reply->focus : xcb_window_t(XCB_WINDOW_NONE);
}

bool X11OverlaySurface::isOurs(std::uint32_t window) const
{
    return std::find(m_windows.begin(), m_windows.end(), window) != m_windows.end();
}

bool X11OverlaySurface::isViewable(std::uint32_t window) const
{
    xcb_generic_error_t *error = nullptr;
    const ReplyPointer<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(m_connection, xcb_get_window_attributes(m_connection, window),
                                        &error),
        &std::free);
    std::free(error);
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

void X11OverlaySurface::setFocus(std::uint32_t window) const
{
    // Checked and thrown away: a window that went meanwhile is no reason for the toolkit to print an X error.
    const xcb_void_cookie_t cookie =
        xcb_set_input_focus_checked(m_connection, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    std::free(xcb_request_check(m_connection, cookie));
}
