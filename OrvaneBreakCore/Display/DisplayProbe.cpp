// SPDX-License-Identifier: GPL-3.0-or-later
#include "DisplayProbe.h"

#include "NativePointers.h"

#include <wayland-client-core.h>
#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

namespace {

bool isWaylandReachable()
{
    return WaylandDisplayPointer(wl_display_connect(nullptr)) != nullptr;
}

} // namespace

bool isX11Reachable()
{
    const XcbConnectionPointer connection(xcb_connect(nullptr, nullptr));
    return xcb_connection_has_error(connection.get()) == 0;
}

std::optional<QString> missingDisplay()
{
    const QString platform = qEnvironmentVariable("QT_QPA_PLATFORM");
    const bool isX11Wanted = platform.isEmpty() || platform.startsWith("xcb"_L1);
    const bool isWaylandWanted = platform.isEmpty() || platform.startsWith("wayland"_L1);
    if (!isX11Wanted && !isWaylandWanted)
        return std::nullopt;
    if ((isWaylandWanted && isWaylandReachable()) || (isX11Wanted && isX11Reachable()))
        return std::nullopt;
    return u"no display: no Wayland compositor answers at WAYLAND_DISPLAY \"%1\" and no X server at DISPLAY \"%2\""_s
        .arg(qEnvironmentVariable("WAYLAND_DISPLAY"), qEnvironmentVariable("DISPLAY"));
}
