// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11UserIdle.h"

#include <poll.h>
#include <xcb/screensaver.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds answerTimeout = 500ms;

xcb_window_t rootWindowOfServerWithExtension(xcb_connection_t *connection)
{
    // Also nullptr for a connection in error.
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(connection, &xcb_screensaver_id);
    if (!extension || extension->present == 0)
        return XCB_WINDOW_NONE;
    const xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    return screens.rem > 0 ? screens.data->root : xcb_window_t(XCB_WINDOW_NONE);
}

/// Waits until the server has sent something, or closed the connection, or the deadline is over.
void waitForServer(xcb_connection_t *connection, SteadyClock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now());
    pollfd descriptor{xcb_get_file_descriptor(connection), POLLIN, 0};
    poll(&descriptor, 1, static_cast<int>(std::max(left, 0ms).count()));
}

/// A plain blocking wait for the reply would hang together with the server.
XcbReply<xcb_screensaver_query_info_reply_t> boundedReply(xcb_connection_t *connection,
                                                          xcb_screensaver_query_info_cookie_t cookie)
{
    const SteadyClock::time_point deadline = SteadyClock::now() + answerTimeout;
    xcb_flush(connection);
    void *reply = nullptr;
    xcb_generic_error_t *error = nullptr;
    while (xcb_poll_for_reply(connection, cookie.sequence, &reply, &error) == 0) {
        if (SteadyClock::now() >= deadline) {
            xcb_discard_reply(connection, cookie.sequence);
            return nullptr;
        }
        waitForServer(connection, deadline);
    }
    const XcbReply<xcb_generic_error_t> dropped(error);
    return XcbReply<xcb_screensaver_query_info_reply_t>(
        static_cast<xcb_screensaver_query_info_reply_t *>(reply));
}

/// Some events come unasked, such as a change of the keyboard layout; nobody else ever takes them out of the
/// queue.
void discardQueuedEvents(xcb_connection_t *connection)
{
    while (XcbReply<xcb_generic_event_t>(xcb_poll_for_queued_event(connection))) {
    }
}

} // namespace

X11UserIdle::X11UserIdle()
    : X11UserIdle(XcbConnectionPointer(xcb_connect(nullptr, nullptr)))
{
}

X11UserIdle::X11UserIdle(XcbConnectionPointer connection)
    : m_connection(std::move(connection))
    , m_rootWindow(rootWindowOfServerWithExtension(m_connection.get()))
{
}

InputIdleSeconds X11UserIdle::secondsSinceLastInput() const
{
    InputIdleSeconds seconds{};
    if (const auto milliseconds = millisecondsSinceInput())
        seconds.fill(*milliseconds / 1000.0);
    return seconds;
}

std::optional<std::uint32_t> X11UserIdle::millisecondsSinceInput() const
{
    if (!isOffered() || xcb_connection_has_error(m_connection.get()) != 0)
        return std::nullopt;
    const auto cookie = xcb_screensaver_query_info(m_connection.get(), m_rootWindow);
    const auto reply = boundedReply(m_connection.get(), cookie);
    discardQueuedEvents(m_connection.get());
    if (!reply)
        return std::nullopt;
    return reply->ms_since_user_input;
}
