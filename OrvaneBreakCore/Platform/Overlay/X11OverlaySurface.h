// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/OverlaySurface.h"

#include <QImage>
#include <QObject>

#include <cstdint>
#include <map>
#include <vector>

struct xcb_connection_t;

/// Override-redirect windows: no window manager places, lists or covers them. The keyboard is taken by the X
/// input focus alone, never by a grab, so that the desktop's own shortcuts (locking the screen, the volume)
/// go on working. Where no compositing manager blends windows, each panel gets a darkened picture of what its
/// screen showed at `begin()`.
class X11OverlaySurface final : public QObject, public OverlaySurface
{
    Q_OBJECT

public:
    /// `connection` is the toolkit's own and stays open as long as this object lives.
    explicit X11OverlaySurface(xcb_connection_t *connection);

    void begin() override;
    void present(QWidget &panel, QScreen &screen, bool takesKeyboard) override;
    void end() override;

private:
    void takeBackdrops();
    void holdFocus();
    void focusMoved();
    [[nodiscard]] std::uint32_t focusedWindow() const;
    [[nodiscard]] bool isOurs(std::uint32_t window) const;
    [[nodiscard]] bool isViewable(std::uint32_t window) const;
    void setFocus(std::uint32_t window) const;

    xcb_connection_t *m_connection;
    std::map<const QScreen *, QImage> m_backdrops; ///< Those that no panel has got yet.
    std::vector<std::uint32_t> m_windows;
    std::uint32_t m_keyboardWindow = 0;
    std::uint32_t m_previousFocus = 0;
    int m_attemptsLeft = 0;
    QMetaObject::Connection m_focusWatch;
};
