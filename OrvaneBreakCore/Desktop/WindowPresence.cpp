// SPDX-License-Identifier: GPL-3.0-or-later
#include "WindowPresence.h"

#include "X11Connection.h"
#include "X11WindowPresence.h"

#include <QWidget>

namespace {

/// For platforms where only Qt's own functions are available.
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
    if (xcb_connection_t *connection = X11Connection::ofToolkit())
        return std::make_unique<X11WindowPresence>(connection);
    return std::make_unique<PlainWindowPresence>();
}
