// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "GnomeOverview.h"
#include "OverlaySurface.h"
#include "X11InvisibleWindow.h"
#include "X11KeyboardFocus.h"
#include "X11PanelWindows.h"

#include <QImage>
#include <QTimer>

#include <map>
#include <memory>

struct xcb_connection_t;

/// Override-redirect windows: no window manager places, lists or covers them, and they stay above those of
/// other programs. Without a compositing manager each panel shows a darkened picture of its screen from the
/// time of `begin()`.
class X11OverlaySurface final : public OverlaySurface
{
public:
    /// `connection` is the toolkit's own and stays open as long as this object lives.
    explicit X11OverlaySurface(xcb_connection_t *connection);

    void begin() override;
    void present(QWidget &panel, QScreen &screen, bool takesKeyboard) override;
    void end(const EndingPress &press) override;

private:
    void takeBackdrops();
    void swallowNextClicks(const QRect &area);

    xcb_connection_t *m_connection;
    GnomeOverview m_gnomeOverview;
    X11KeyboardFocus m_keyboardFocus;
    X11PanelWindows m_panelWindows;
    std::unique_ptr<X11InvisibleWindow> m_clickCatcher;
    QTimer m_clickCatcherTimer;
    std::map<const QScreen *, QImage> m_backdrops; ///< Not yet given to a panel.
};
