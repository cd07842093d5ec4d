// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "X11InvisibleWindow.h"

#include <QDeadlineTimer>
#include <QMetaObject>
#include <QObject>
#include <QTimer>
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
    ~X11KeyboardFocus() override;

    /// Remembers who has the keyboard.
    void begin();

    /// Counts a window among those that may have the keyboard during the break.
    void add(std::uint32_t window);

    /// Gives `window`, which is mapped, the keyboard before this returns, and again when another program
    /// takes it, until `end()`; after twenty times that program may have it. Inside a Wayland session it also
    /// reminds the compositor of the window every half second.
    void hold(std::uint32_t window);

    /// Gives the keyboard back, unless another program has it; to be called while the windows are still
    /// shown. While the key with the code `heldKey` is down, an invisible window keeps the keyboard, for at
    /// most five seconds; 0 is no key.
    void end(std::uint32_t heldKey);

private:
    void takeBack();
    void refocus();
    void showAnchor();
    void waitForRelease(std::uint32_t key);
    void giveBack();
    void letGo();
    [[nodiscard]] std::uint32_t focusedWindow() const;
    [[nodiscard]] bool isElsewhereForToolkit() const;
    [[nodiscard]] bool isOurs(std::uint32_t window) const;
    [[nodiscard]] bool isDown(std::uint32_t key) const;
    [[nodiscard]] bool isViewable(std::uint32_t window) const;
    [[nodiscard]] bool isManaged(std::uint32_t window) const;
    void setFocus(std::uint32_t window) const;

    xcb_connection_t *m_connection;
    bool m_isInsideWayland;
    std::vector<std::uint32_t> m_windows;
    std::unique_ptr<QWidget> m_anchor;
    std::unique_ptr<X11InvisibleWindow> m_keyCatcher;
    QTimer m_releaseTimer;
    QTimer m_refocusTimer; ///< Inside a Wayland session.
    QDeadlineTimer m_releaseDeadline;
    std::uint32_t m_heldKey = 0;
    std::uint32_t m_keyboardWindow = 0;
    std::uint32_t m_previousFocus = 0;
    int m_attemptsLeft = 0;
    QMetaObject::Connection m_focusWatch;
};
