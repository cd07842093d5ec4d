// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "OverlaySurface.h"
#include "X11InvisibleWindow.h"
#include "X11KeyboardFocus.h"

#include <QImage>
#include <QTimer>

#include <map>
#include <memory>

struct xcb_connection_t;

/// Override-redirect windows: no window manager places, lists or covers them. Where no compositing manager
/// blends windows, each panel gets a darkened picture of what its screen showed at `begin()`.
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
    X11KeyboardFocus m_keyboardFocus;
    std::unique_ptr<X11InvisibleWindow> m_clickCatcher;
    QTimer m_clickCatcherTimer;
    std::map<const QScreen *, QImage> m_backdrops; ///< Those that no panel has got yet.
};
