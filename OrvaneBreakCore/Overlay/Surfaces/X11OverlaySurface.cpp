// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11OverlaySurface.h"

#include "ScreenFrame.h"
#include "X11Backdrop.h"

#include <QGuiApplication>
#include <QPalette>
#include <QScreen>
#include <QStyleHints>

#include <private/qhighdpiscaling_p.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// How long the second click of a double click is expected, whatever the desktop's double-click time is.
constexpr std::chrono::milliseconds longestDoubleClick = 500ms;

} // namespace

X11OverlaySurface::X11OverlaySurface(xcb_connection_t *connection)
    : m_connection(connection)
    , m_keyboardFocus(connection)
    , m_panelWindows(connection)
{
    m_clickCatcherTimer.setSingleShot(true);
    m_clickCatcherTimer.callOnTimeout([this] { m_clickCatcher.reset(); });
}

void X11OverlaySurface::begin()
{
    m_clickCatcher.reset();
    m_gnomeOverview.keepClosed();
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

void X11OverlaySurface::end(const EndingPress &press)
{
    m_gnomeOverview.leaveAlone();
    m_backdrops.clear();
    m_panelWindows.end();
    m_keyboardFocus.end(press.key);
    if (!press.clicked.isEmpty())
        swallowNextClicks(press.clicked);
}

void X11OverlaySurface::swallowNextClicks(const QRect &area)
{
    const QScreen *screen = QGuiApplication::screenAt(area.center());
    m_clickCatcher =
        std::make_unique<X11InvisibleWindow>(m_connection, QHighDpi::toNativePixels(area, screen));
    const std::chrono::milliseconds doubleClick(QGuiApplication::styleHints()->mouseDoubleClickInterval());
    m_clickCatcherTimer.start(std::min(doubleClick, longestDoubleClick));
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
