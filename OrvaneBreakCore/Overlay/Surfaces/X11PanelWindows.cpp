// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11PanelWindows.h"

#include "ScreenFrame.h"
#include "X11Connection.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <qpa/qplatformwindow.h>

#include <private/qhighdpiscaling_p.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <span>

using namespace std::chrono_literals;

namespace {

/// A program that raises its window whenever another covers it would otherwise keep both busy.
constexpr std::chrono::milliseconds raisePause = 100ms;
constexpr int maxRaises = 20;

void setFrame(xcb_connection_t *connection, xcb_window_t window, const QRect &frame)
{
    const std::array values{static_cast<std::uint32_t>(frame.x()), static_cast<std::uint32_t>(frame.y()),
                            static_cast<std::uint32_t>(frame.width()),
                            static_cast<std::uint32_t>(frame.height())};
    xcb_configure_window(connection, window,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                             XCB_CONFIG_WINDOW_HEIGHT,
                         values.data());
}

/// Compositing managers of the picom family put a shadow around every window that does not refuse it, here on
/// the neighbouring screens.
void refuseShadow(xcb_connection_t *connection, xcb_window_t window)
{
    constexpr std::uint32_t none = 0;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window,
                        X11Connection::atom(connection, "_COMPTON_SHADOW"), XCB_ATOM_CARDINAL, 32, 1, &none);
}

/// The attributes of a window, or null if it is gone.
XcbReply<xcb_get_window_attributes_reply_t> attributesOf(xcb_connection_t *connection, xcb_window_t window)
{
    xcb_generic_error_t *error = nullptr;
    XcbReply<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, window), &error));
    const XcbReply<xcb_generic_error_t> dropped(error);
    return reply;
}

xcb_window_t rootOf(xcb_connection_t *connection, xcb_window_t window)
{
    const XcbReply<xcb_get_geometry_reply_t> reply(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    return reply ? reply->root : xcb_window_t(XCB_WINDOW_NONE);
}

} // namespace

X11PanelWindows::X11PanelWindows(xcb_connection_t *connection)
    : m_connection(connection)
{
    m_raiseTimer.setSingleShot(true);
    m_raiseTimer.callOnTimeout([this] { raiseIfCovered(); });
}

X11PanelWindows::~X11PanelWindows()
{
    end();
}

std::uint32_t X11PanelWindows::add(QWidget &panel, QScreen &screen)
{
    const QRect frame = nativeFrame(screen);
    panel.setScreen(&screen);
    panel.setGeometry(
        QRect(screen.geometry().topLeft(), coveringSize(frame.size(), QHighDpiScaling::factor(&screen))));
    const auto window = static_cast<xcb_window_t>(panel.winId());
    setFrame(m_connection, window, frame);
    refuseShadow(m_connection, window);
    leaveOutCovered(*panel.windowHandle(), frame);
    if (m_windows.empty()) {
        m_root = rootOf(m_connection, window);
        m_raisesLeft = maxRaises;
        m_raisePause.setRemainingTime(0);
        watchStack(true);
        qGuiApp->installNativeEventFilter(this);
    }
    m_windows.push_back(window);
    return window;
}

void X11PanelWindows::end()
{
    if (m_windows.empty())
        return;
    qGuiApp->removeNativeEventFilter(this);
    watchStack(false);
    m_raiseTimer.stop();
    m_windows.clear();
    m_covered = {};
}

/// Screens that overlap are darkened once where they do.
void X11PanelWindows::leaveOutCovered(QWindow &window, const QRect &frame)
{
    const QRegion uncovered = QRegion(frame) - m_covered;
    if (uncovered != QRegion(frame) && !uncovered.isEmpty())
        window.handle()->setMask(uncovered.translated(-frame.topLeft()));
    m_covered += frame;
}

/// The event mask of the root window belongs to the connection, so that the toolkit's part of it stays.
void X11PanelWindows::watchStack(bool isWatched)
{
    const auto attributes = attributesOf(m_connection, m_root);
    if (!attributes)
        return;
    constexpr std::uint32_t changes = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    const std::uint32_t mask =
        isWatched ? attributes->your_event_mask | changes : attributes->your_event_mask & ~changes;
    xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(m_connection);
}

bool X11PanelWindows::nativeEventFilter(const QByteArray & /*type*/, void *message, qintptr * /*result*/)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    switch (event->response_type & 0x7fU) {
    case XCB_MAP_NOTIFY:
        handleStackChange(reinterpret_cast<const xcb_map_notify_event_t *>(event)->window);
        break;
    case XCB_CIRCULATE_NOTIFY:
        handleStackChange(reinterpret_cast<const xcb_circulate_notify_event_t *>(event)->window);
        break;
    case XCB_REPARENT_NOTIFY:
        handleStackChange(reinterpret_cast<const xcb_reparent_notify_event_t *>(event)->window);
        break;
    case XCB_CONFIGURE_NOTIFY: {
        const auto *change = reinterpret_cast<const xcb_configure_notify_event_t *>(event);
        handleStackChange(change->window);
        // The toolkit would round the frame to its own pixels and paint no further than that.
        return isOurs(change->event);
    }
    default:
        break;
    }
    return false;
}

void X11PanelWindows::handleStackChange(std::uint32_t window)
{
    if (m_raisesLeft > 0 && !m_raiseTimer.isActive() && !isOurs(window))
        m_raiseTimer.start(static_cast<int>(m_raisePause.remainingTime()));
}

void X11PanelWindows::raiseIfCovered()
{
    if (!isCovered())
        return;
    constexpr std::uint32_t above = XCB_STACK_MODE_ABOVE;
    for (const std::uint32_t window : m_windows)
        xcb_configure_window(m_connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_flush(m_connection);
    m_raisePause.setRemainingTime(raisePause);
    if (--m_raisesLeft == 0)
        watchStack(false);
}

bool X11PanelWindows::isCovered() const
{
    const XcbReply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, m_root), nullptr));
    if (!tree)
        return false;
    const std::span fromBottom(xcb_query_tree_children(tree.get()), tree->children_len);
    const auto isPanel = [this](xcb_window_t window) { return isOurs(window); };
    const auto isVisible = [this](xcb_window_t window) {
        const auto attributes = attributesOf(m_connection, window);
        return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    };
    const auto lowestPanel = std::find_if(fromBottom.begin(), fromBottom.end(), isPanel);
    return std::any_of(lowestPanel, fromBottom.end(),
                       [&](xcb_window_t window) { return !isPanel(window) && isVisible(window); });
}

bool X11PanelWindows::isOurs(std::uint32_t window) const
{
    return std::find(m_windows.begin(), m_windows.end(), window) != m_windows.end();
}
