// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11OverlaySurface.h"

#include "ScreenFrame.h"
#include "X11Backdrop.h"

#include <QGuiApplication>
#include <QPalette>
#include <QScreen>

#include <cstdint>
#include <utility>

X11OverlaySurface::X11OverlaySurface(xcb_connection_t *connection)
    : m_connection(connection)
    , m_keyboardFocus(connection)
    , m_panelWindows(connection)
{
}

void X11OverlaySurface::begin()
{
    m_keyboardFocus.begin();
    takeBackdrops();
}

void X11OverlaySurface::present(QWidget &panel, QScreen &screen, bool takesKeyboard)
{
    panel.setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                         Qt::BypassWindowManagerHint);
    if (const auto backdrop = m_backdrops.extract(&screen)) {
        QPalette palette = panel.palette();
        palette.setBrush(QPalette::Window, backdrop.mapped());
        panel.setPalette(palette);
    }
    const std::uint32_t window = m_panelWindows.add(panel, screen);
    panel.show();
    m_keyboardFocus.add(window);
    if (takesKeyboard)
        m_keyboardFocus.hold(window);
}

void X11OverlaySurface::end()
{
    m_backdrops.clear();
    m_panelWindows.end();
    m_keyboardFocus.end();
}

/// Takes all pictures before the first panel is shown, because screens may overlap.
void X11OverlaySurface::takeBackdrops()
{
    m_backdrops.clear();
    if (!X11Backdrop::isNeeded(m_connection))
        return;
    for (QScreen *screen : distinctScreens(QGuiApplication::screens())) {
        QImage picture = X11Backdrop::take(*screen);
        if (!picture.isNull())
            m_backdrops.emplace(screen, std::move(picture));
    }
}
