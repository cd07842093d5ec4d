// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Overlay/X11Backdrop.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

using namespace Qt::StringLiterals;

namespace {

template <typename Reply>
using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

xcb_atom_t atom(xcb_connection_t *connection, std::string_view name)
{
    const ReplyPointer<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(
            connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()),
            nullptr),
        &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

/// The X screen that the toolkit has connected to.
int screenNumber()
{
    char *host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen) == 0)
        return 0;
    std::free(host);
    return screen;
}

bool hasCompositingManager(xcb_connection_t *connection)
{
    const std::string name = "_NET_WM_CM_S" + std::to_string(screenNumber());
    const ReplyPointer<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom(connection, name)),
                                      nullptr),
        &std::free);
    return reply && reply->owner != XCB_WINDOW_NONE;
}

/// Newer servers say so themselves; older ones name their outputs so.
bool isInsideWayland(xcb_connection_t *connection)
{
    constexpr std::string_view extension = "XWAYLAND";
    const ReplyPointer<xcb_query_extension_reply_t> reply(
        xcb_query_extension_reply(
            connection,
            xcb_query_extension(connection, static_cast<std::uint16_t>(extension.size()), extension.data()),
            nullptr),
        &std::free);
    const QList<QScreen *> screens = QGuiApplication::screens();
    return (reply && reply->present != 0) || std::any_of(screens.begin(), screens.end(), [](QScreen *screen) {
               return screen->name().startsWith("XWAYLAND"_L1);
           });
}

} // namespace

bool X11Backdrop::isNeeded(xcb_connection_t *connection)
{
    return !hasCompositingManager(connection) && !isInsideWayland(connection);
}

QImage X11Backdrop::take(QScreen &screen)
{
    return darkened(screen.grabWindow(0).toImage());
}

QImage X11Backdrop::darkened(QImage picture)
{
    picture.convertTo(QImage::Format_RGB32);
    constexpr QRgb opaque = 0xff000000;
    constexpr QRgb quarters = 0x003f3f3f;
    for (int y = 0; y < picture.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(picture.scanLine(y));
        std::transform(line, line + picture.width(), line,
                       [](QRgb pixel) { return opaque | ((pixel >> 2) & quarters); });
    }
    return picture;
}
