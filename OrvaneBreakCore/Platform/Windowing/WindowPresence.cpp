// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Windowing/WindowPresence.h"

#include "Platform/Windowing/X11WindowPresence.h"

#include <QGuiApplication>
#include <QWidget>

namespace {

/// Where the toolkit's own means are all there is.
class PlainWindowPresence final : public WindowPresence
{
public:
    void adopt(QWidget & /*window*/) override {}
    void setAccessory(bool /*isAccessory*/) override {}

    void bringToFront(QWidget &window) override
    {
        window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
        window.show();
        window.raise();
        window.activateWindow();
    }
};

} // namespace

std::unique_ptr<WindowPresence> makeWindowPresence()
{
    // The platform plugin without screens of its own claims to be X11 as well, and has no connection.
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 && x11->connection())
        return std::make_unique<X11WindowPresence>(x11->connection());
    return std::make_unique<PlainWindowPresence>();
}
