// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Client.h"

#include <poll.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// Waits until the server sends something or closes the connection, at most until the deadline.
void waitForServer(xcb_connection_t *connection, X11Client::Deadline deadline)
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd descriptor{xcb_get_file_descriptor(connection), POLLIN, 0};
    poll(&descriptor, 1, static_cast<int>(std::max(left, 0ms).count()));
}

/// Servers send some events to every client, such as a change of the keyboard layout. Nobody else takes them
/// out of the queue.
void discardQueuedEvents(xcb_connection_t *connection)
{
    while (XcbReply<xcb_generic_event_t>(xcb_poll_for_queued_event(connection))) {
    }
}

} // namespace

X11Client::X11Client(XcbConnectionPointer connection)
    : m_connection(std::move(connection))
{
}

X11Client X11Client::toDisplay()
{
    return X11Client(XcbConnectionPointer(xcb_connect(nullptr, nullptr)));
}

bool X11Client::isConnected() const
{
    return m_connection && xcb_connection_has_error(m_connection.get()) == 0;
}

const xcb_screen_t *X11Client::screen() const
{
    if (!isConnected())
        return nullptr;
    const xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get()));
    return screens.rem > 0 ? screens.data : nullptr;
}

X11Client::Deadline X11Client::usualDeadline()
{
    return std::chrono::steady_clock::now() + 500ms;
}

/// The X library's own wait would hang together with the server.
void *X11Client::waitForReply(unsigned sequence, Deadline deadline) const
{
    xcb_connection_t *connection = m_connection.get();
    xcb_flush(connection);
    void *reply = nullptr;
    xcb_generic_error_t *error = nullptr;
    while (xcb_poll_for_reply(connection, sequence, &reply, &error) == 0) {
        if (std::chrono::steady_clock::now() >= deadline) {
            xcb_discard_reply(connection, sequence);
            break;
        }
        waitForServer(connection, deadline);
    }
    const XcbReply<xcb_generic_error_t> dropped(error);
    discardQueuedEvents(connection);
    return reply;
}
