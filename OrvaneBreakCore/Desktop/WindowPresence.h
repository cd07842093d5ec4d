// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

class QWidget;

/// How the application's windows are present on the desktop: with or without a task-bar entry, and in front
/// of others. User-interface thread only.
class WindowPresence
{
public:
    WindowPresence() = default;
    virtual ~WindowPresence() = default;
    WindowPresence(const WindowPresence &) = delete;
    WindowPresence &operator=(const WindowPresence &) = delete;

    /// Applies `setAccessory()` to `window` from now on. To be called before the window is first shown; the
    /// window may be deleted at any time.
    virtual void adopt(QWidget &window) = 0;

    /// Sets whether the adopted windows, visible or not, stay out of the task bar and the pager. Has no
    /// effect where the desktop does not support that.
    virtual void setAccessory(bool isAccessory) = 0;

    /// Shows `window`, restores it if it is minimised, and asks the desktop to put it in front with the
    /// keyboard.
    virtual void bringToFront(QWidget &window) = 0;
};

/// The presence for Qt's platform plugin; needs the application object.
[[nodiscard]] std::unique_ptr<WindowPresence> makeWindowPresence();
