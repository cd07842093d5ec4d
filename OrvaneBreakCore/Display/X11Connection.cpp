// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Connection.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <cstdint>

using namespace Qt::StringLiterals;

xcb_connection_t *X11Connection::ofToolkit()
{
    // The platform plugin without screens of its own claims to be X11 as well, and has no connection.
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_atom_t X11Connection::atom(xcb_connection_t *connection, std::string_view name)
{
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

bool X11Connection::isInsideWayland(xcb_connection_t *connection)
{
    // Newer servers have this extension; older ones name their outputs so.
    constexpr std::string_view name = "XWAYLAND";
    const XcbReply<xcb_query_extension_reply_t> reply(xcb_query_extension_reply(
        connection, xcb_query_extension(connection, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    const QList<QScreen *> screens = QGuiApplication::screens();
    return (reply && reply->present != 0) || std::any_of(screens.begin(), screens.end(), [](QScreen *screen) {
               return screen->name().startsWith("XWAYLAND"_L1);
           });
}
