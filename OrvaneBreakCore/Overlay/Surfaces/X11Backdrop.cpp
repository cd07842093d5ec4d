// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Backdrop.h"

#include "X11Connection.h"

#include <QPixmap>
#include <QScreen>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

/// The number of the X screen that the toolkit is connected to.
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
    const XcbReply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, X11Connection::atom(connection, name)), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

} // namespace

bool X11Backdrop::isNeeded(xcb_connection_t *connection)
{
    return !hasCompositingManager(connection) && !X11Connection::isInsideWayland(connection);
}

QImage X11Backdrop::take(QScreen &screen)
{
    QImage picture = darkened(screen.grabWindow(0).toImage());
    picture.setDevicePixelRatio(screen.devicePixelRatio());
    return picture;
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
