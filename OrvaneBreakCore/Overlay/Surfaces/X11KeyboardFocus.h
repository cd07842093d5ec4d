// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMetaObject>
#include <QObject>
#include <QWidget>

#include <cstdint>
#include <memory>
#include <vector>

struct xcb_connection_t;

/// The keyboard during a break, taken by the X input focus alone and never by a grab, so that the desktop's
/// own shortcuts (locking the screen, the volume) go on working. User-interface thread only.
class X11KeyboardFocus final : public QObject
{
    Q_OBJECT

public:
    /// `connection` is the toolkit's own and stays open as long as this object lives.
    explicit X11KeyboardFocus(xcb_connection_t *connection);

    /// Remembers who has the keyboard.
    void begin();

    /// Counts a window among those that may have the keyboard during the break.
    void add(std::uint32_t window);

    /// Gives `window` the keyboard, and again when another program takes it, until `end()`; after twenty
    /// times that program may have it.
    void hold(std::uint32_t window);

    /// Gives the keyboard back, unless another program has it; to be called while the windows are still
    /// shown. Does nothing the second time.
    void end();

private:
    void takeBack();
    void insist();
    void showAnchor();
    void giveBack();
    [[nodiscard]] std::uint32_t focusedWindow() const;
    [[nodiscard]] bool isOurs(std::uint32_t window) const;
    [[nodiscard]] bool isViewable(std::uint32_t window) const;
    [[nodiscard]] bool isManaged(std::uint32_t window) const;
    void setFocus(std::uint32_t window) const;

    xcb_connection_t *m_connection;
    bool m_isInsideWayland;
    std::vector<std::uint32_t> m_windows;
    std::unique_ptr<QWidget> m_anchor;
    std::uint32_t m_keyboardWindow = 0;
    std::uint32_t m_previousFocus = 0;
    int m_attemptsLeft = 0;
    QMetaObject::Connection m_focusWatch;
};
