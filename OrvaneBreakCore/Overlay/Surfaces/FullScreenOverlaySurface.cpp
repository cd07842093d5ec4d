// SPDX-License-Identifier: GPL-3.0-or-later
#include "FullScreenOverlaySurface.h"

#include <QPalette>
#include <QScreen>

void FullScreenOverlaySurface::present(QWidget &panel, QScreen &screen, bool takesKeyboard)
{
    panel.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    QPalette palette = panel.palette();
    palette.setColor(QPalette::Window, Qt::black);
    panel.setPalette(palette);
    panel.setScreen(&screen);
    panel.setGeometry(screen.geometry());
    panel.showFullScreen();
    if (takesKeyboard)
        panel.activateWindow();
}
