// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Overlay/FullScreenOverlaySurface.h"

#include <QScreen>

void FullScreenOverlaySurface::present(QWidget &panel, QScreen &screen, bool takesKeyboard)
{
    panel.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    panel.setScreen(&screen);
    panel.setGeometry(screen.geometry());
    panel.showFullScreen();
    if (takesKeyboard)
        panel.activateWindow();
}
