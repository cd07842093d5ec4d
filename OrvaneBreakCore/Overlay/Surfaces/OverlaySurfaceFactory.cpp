// SPDX-License-Identifier: GPL-3.0-or-later
#include "OverlaySurfaceFactory.h"

#include "FullScreenOverlaySurface.h"
#include "WaylandOverlaySurface.h"
#include "X11Connection.h"
#include "X11OverlaySurface.h"

#include <QGuiApplication>

using namespace Qt::StringLiterals;

std::unique_ptr<OverlaySurface> makeOverlaySurface()
{
    if (xcb_connection_t *connection = X11Connection::ofToolkit())
        return std::make_unique<X11OverlaySurface>(connection);
    if (QGuiApplication::platformName().startsWith("wayland"_L1)) {
        if (auto layers = WaylandOverlaySurface::create())
            return layers;
    }
    return std::make_unique<FullScreenOverlaySurface>();
}
