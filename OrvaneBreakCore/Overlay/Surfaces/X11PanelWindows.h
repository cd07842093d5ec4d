// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractNativeEventFilter>
#include <QDeadlineTimer>
#include <QRegion>
#include <QTimer>
#include <QWidget>

#include <cstdint>
#include <vector>

class QScreen;
class QWindow;
struct xcb_connection_t;

/// The X windows of a break's panels: each exactly on its screen, whatever the toolkit's scale, less what an
/// earlier one covers already; all above the windows that other programs show or raise during the break.
/// User-interface thread only.
class X11PanelWindows final : public QAbstractNativeEventFilter
{
public:
    /// `connection` is the toolkit's own and stays open as long as this object lives. Needs the application
    /// object.
    explicit X11PanelWindows(xcb_connection_t *connection);
    ~X11PanelWindows() override;
    X11PanelWindows(const X11PanelWindows &) = delete;
    X11PanelWindows &operator=(const X11PanelWindows &) = delete;

    /// Creates the window of `panel`, which has its window flags and has not been shown, with the exact frame
    /// of `screen`, and returns it. Until `end()` the windows are raised within a tenth of a second when a
    /// window of another program comes above them; after twenty times that program has its way.
    std::uint32_t add(QWidget &panel, QScreen &screen);

    /// Leaves the windows and their order alone from now on. Does nothing the second time.
    void end();

    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;

private:
    void leaveOutCovered(QWindow &window, const QRect &frame);
    void watchStack(bool isWatched);
    void handleStackChange(std::uint32_t window);
    void raiseIfCovered();
    [[nodiscard]] bool isCovered() const;
    [[nodiscard]] bool isOurs(std::uint32_t window) const;

    xcb_connection_t *m_connection;
    std::uint32_t m_root = 0;
    std::vector<std::uint32_t> m_windows;
    QRegion m_covered; ///< In root window pixels.
    QTimer m_raiseTimer;
    QDeadlineTimer m_raisePause;
    int m_raisesLeft = 0;
};
