// SPDX-License-Identifier: GPL-3.0-or-later
#include "StartupNotification.h"

#include "X11Connection.h"

#include <xcb/xcb.h>

#include <algorithm>
#include <cstring>

void endStartupNotification(const QByteArray &id)
{
    xcb_connection_t *connection = X11Connection::ofToolkit();
    if (!connection || id.isEmpty())
        return;
    QByteArray quoted = id;
    quoted.replace('\\', "\\\\").replace('"', "\\\"");
    const QByteArray text = "remove: ID=\"" + quoted + '"';

    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    // The parts of a message have the window of their sender in common.
    const xcb_window_t sender = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, sender, root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_client_message_event_t part = {};
    part.response_type = XCB_CLIENT_MESSAGE;
    part.format = 8;
    part.window = sender;
    part.type = X11Connection::atom(connection, "_NET_STARTUP_INFO_BEGIN");
    const xcb_atom_t continuation = X11Connection::atom(connection, "_NET_STARTUP_INFO");
    // The zero byte at the end of the text belongs to the message.
    for (qsizetype sent = 0; sent <= text.size(); sent += sizeof part.data.data8) {
        std::memset(part.data.data8, 0, sizeof part.data.data8);
        std::copy_n(text.constBegin() + sent, std::min<qsizetype>(sizeof part.data.data8, text.size() - sent),
                    part.data.data8);
        xcb_send_event(connection, 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                       reinterpret_cast<const char *>(&part));
        part.type = continuation;
    }
    xcb_destroy_window(connection, sender);
    xcb_flush(connection);
}
