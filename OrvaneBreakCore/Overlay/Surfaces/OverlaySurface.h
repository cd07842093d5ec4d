// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <QWidget>

#include <cstdint>

/// The press that ends a break. Its rest (repeats of a held key, the second click of a double click) is meant
/// for no program.
struct EndingPress
{
    std::uint32_t key = 0; ///< The native code of a key that is still down, or 0.
    QRect clicked;         ///< The control that was clicked, in global coordinates, or empty.
};

/// How this desktop puts a window over everything else. User-interface thread only.
class OverlaySurface
{
public:
    OverlaySurface() = default;
    virtual ~OverlaySurface() = default;
    OverlaySurface(const OverlaySurface &) = delete;
    OverlaySurface &operator=(const OverlaySurface &) = delete;

    /// False while the desktop does not draw what the program shows, because a lock screen is up that reports
    /// to nobody. May wait for a second, but does so only once per lock.
    [[nodiscard]] virtual bool isDrawn() { return true; }

    /// Called once before the panels of a break are presented.
    virtual void begin() = 0;

    /// Shows `panel`, a top-level widget that has not been shown yet, over everything on `screen`, whose
    /// whole area it covers, on every workspace, without a task-bar entry and without activating the
    /// application. The panel with `takesKeyboard` receives what is typed until `end()`. Where the desktop
    /// cannot shine through, the panel's background, which is the Window role of its palette, is replaced.
    virtual void present(QWidget &panel, QScreen &screen, bool takesKeyboard) = 0;

    /// Called once before the panels are hidden: the keyboard goes back to where it was, unless somebody else
    /// has it. Where the desktop allows it, the rest of `press` reaches no other program.
    virtual void end(const EndingPress &press) = 0;
};
