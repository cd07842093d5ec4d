// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11WindowPresence.h"

#include "X11Connection.h"

#include <QEvent>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr std::uint32_t removeState = 0;
constexpr std::uint32_t addState = 1;

/// The source indication of pagers, which act for the user: window managers may ignore requests of
/// applications.
constexpr std::uint32_t sourceUser = 2;

constexpr std::uint32_t maxStates = 64;

} // namespace

X11WindowPresence::X11WindowPresence(xcb_connection_t *connection)
    : m_connection(connection)
    , m_root(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root)
    , m_rootDepth(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root_depth)
    , m_state(X11Connection::atom(connection, "_NET_WM_STATE"))
    , m_skipTaskbar(X11Connection::atom(connection, "_NET_WM_STATE_SKIP_TASKBAR"))
    , m_skipPager(X11Connection::atom(connection, "_NET_WM_STATE_SKIP_PAGER"))
    , m_activeWindow(X11Connection::atom(connection, "_NET_ACTIVE_WINDOW"))
{
}

void X11WindowPresence::adopt(QWidget &window)
{
    m_windows.emplace_back(&window);
    window.installEventFilter(this);
}

void X11WindowPresence::setAccessory(bool isAccessory)
{
    m_isAccessory = isAccessory;
    for (const QPointer<QWidget> &window : m_windows) {
        if (window && window->isVisible())
            changeStateOfMapped(static_cast<std::uint32_t>(window->winId()));
    }
}

void X11WindowPresence::bringToFront(QWidget &window)
{
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
    sendToRoot(static_cast<std::uint32_t>(window.winId()), m_activeWindow,
               {sourceUser, XCB_CURRENT_TIME, 0, 0, 0});
}

bool X11WindowPresence::eventFilter(QObject *watched, QEvent *event)
{
    auto *window = qobject_cast<QWidget *>(watched);
    if (event->type() == QEvent::Show) {
        // This event comes before the native window is mapped. The state is set each time, because window
        // managers discard it when a window is hidden.
        setStateBeforeMapping(static_cast<std::uint32_t>(window->winId()));
        setBackground(*window);
    } else if (event->type() == QEvent::PaletteChange && window->testAttribute(Qt::WA_WState_Created)) {
        setBackground(*window);
    }
    return false;
}

void X11WindowPresence::setBackground(const QWidget &window) const
{
    // Only at this depth are pixel values known to be RGB.
    if (m_rootDepth != 24 || window.testAttribute(Qt::WA_TranslucentBackground))
        return;
    const std::uint32_t pixel = window.palette().color(QPalette::Window).rgb() & RGB_MASK;
    xcb_change_window_attributes(m_connection, static_cast<std::uint32_t>(window.winId()), XCB_CW_BACK_PIXEL,
                                 &pixel);
}

void X11WindowPresence::setStateBeforeMapping(std::uint32_t window) const
{
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection, xcb_get_property(m_connection, 0, window, m_state, XCB_ATOM_ATOM, 0, maxStates),
        nullptr));
    std::vector<xcb_atom_t> states;
    if (reply) {
        const auto *first = static_cast<const xcb_atom_t *>(xcb_get_property_value(reply.get()));
        const auto count =
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get())) / sizeof(xcb_atom_t);
        states.assign(first, first + count);
    }
    std::erase_if(states,
                  [this](xcb_atom_t state) { return state == m_skipTaskbar || state == m_skipPager; });
    if (m_isAccessory)
        states.insert(states.end(), {m_skipTaskbar, m_skipPager});
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, m_state, XCB_ATOM_ATOM, 32,
                        static_cast<std::uint32_t>(states.size()), states.data());
}

void X11WindowPresence::changeStateOfMapped(std::uint32_t window) const
{
    sendToRoot(window, m_state,
               {m_isAccessory ? addState : removeState, m_skipTaskbar, m_skipPager, sourceUser, 0});
}

void X11WindowPresence::sendToRoot(std::uint32_t window, std::uint32_t type,
                                   const std::uint32_t (&data)[5]) const
{
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = type;
    std::copy(std::begin(data), std::end(data), message.data.data32);
    xcb_send_event(m_connection, 0, m_root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&message));
    xcb_flush(m_connection);
}
