// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "WindowPresence.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <cstdint>
#include <vector>

struct xcb_connection_t;

/// The window presence by the hints of X11 window managers.
class X11WindowPresence final : public QObject, public WindowPresence
{
    Q_OBJECT

public:
    /// `connection` is Qt's own and outlives this object.
    explicit X11WindowPresence(xcb_connection_t *connection);

    void adopt(QWidget &window) override;
    void setAccessory(bool isAccessory) override;
    void bringToFront(QWidget &window) override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void setStateBeforeMapping(std::uint32_t window) const;
    /// Sets what the server fills `window` with until it is first painted.
    void setBackground(const QWidget &window) const;
    void changeStateOfMapped(std::uint32_t window) const;
    void sendToRoot(std::uint32_t window, std::uint32_t type, const std::uint32_t (&data)[5]) const;

    xcb_connection_t *m_connection;
    std::uint32_t m_root;
    int m_rootDepth;
    std::uint32_t m_state;
    std::uint32_t m_skipTaskbar;
    std::uint32_t m_skipPager;
    std::uint32_t m_activeWindow;
    bool m_isAccessory = false;
    std::vector<QPointer<QWidget>> m_windows;
};
