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

    /// Puts `window` under this object's care, before it is shown for the first time. It outlives this object
    /// or is forgotten when it goes.
    virtual void adopt(QWidget &window) = 0;

    /// Whether the adopted windows stay out of the task bar and the pager, those shown now and those shown
    /// later. Where the desktop has no means for that, they stay in it.
    virtual void setAccessory(bool isAccessory) = 0;

    /// Shows `window`, un-minimises it and asks the desktop to put it in front with the keyboard.
    virtual void bringToFront(QWidget &window) = 0;
};

/// The presence for the platform that the toolkit runs on; needs the application object.
[[nodiscard]] std::unique_ptr<WindowPresence> makeWindowPresence();
