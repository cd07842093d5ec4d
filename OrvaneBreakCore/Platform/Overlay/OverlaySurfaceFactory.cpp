// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Overlay/OverlaySurfaceFactory.h"

#include "Platform/Overlay/FullScreenOverlaySurface.h"
#include "Platform/Overlay/WaylandOverlaySurface.h"
#include "Platform/Overlay/X11OverlaySurface.h"

#include <QGuiApplication>

using namespace Qt::StringLiterals;

std::unique_ptr<OverlaySurface> makeOverlaySurface()
{
    // The platform plugin without screens of its own claims to be X11 as well, and has no connection.
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 && x11->connection())
        return std::make_unique<X11OverlaySurface>(x11->connection());
    if (QGuiApplication::platformName().startsWith("wayland"_L1)) {
        if (auto layers = WaylandOverlaySurface::create())
            return layers;
    }
    return std::make_unique<FullScreenOverlaySurface>();
}
