// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "X11Client.h"

#include <cstdint>

/// Finds the X11 lock screens that report to no bus, such as i3lock, xsecurelock and XScreenSaver: another
/// client holds the keyboard and the pointer, and other clients' override-redirect windows cover at least
/// half of the root window. No input reaches a break then, whoever the client is. Where the program does not
/// run on X11, or runs inside a Wayland session, there is never one. User-interface thread only.
class X11LockWindow
{
public:
    /// Opens a connection of its own if `toolkit`, the toolkit's connection or nullptr, is one to an ordinary
    /// X server.
    explicit X11LockWindow(xcb_connection_t *toolkit);

    /// Asks the server each time, and waits for half a second at most. False on a lost connection and without
    /// an answer. Grabs nothing and selects no events, so no client notices.
    [[nodiscard]] bool isUp() const;

private:
    [[nodiscard]] bool isInputGrabbed(X11Client::Deadline deadline) const;
    [[nodiscard]] bool isCovered(X11Client::Deadline deadline) const;
    [[nodiscard]] bool isToolkitWindow(xcb_window_t window) const;

    X11Client m_client;
    std::uint32_t m_toolkitBase = 0;
    std::uint32_t m_toolkitMask = 0;
    xcb_window_t m_hidden = XCB_WINDOW_NONE; ///< Never mapped.
};
