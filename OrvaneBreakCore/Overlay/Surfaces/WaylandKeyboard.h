// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "NativePointers.h"

#include <functional>

/// Where the compositor has the keyboard, as far as this program's surfaces are concerned. The toolkit does
/// not tell of a surface whose role it does not know.
class WaylandKeyboard
{
public:
    /// `seat` is the toolkit's and has a keyboard. `moved` is called while the toolkit dispatches its events.
    WaylandKeyboard(wl_seat &seat, std::function<void()> moved);
    WaylandKeyboard(const WaylandKeyboard &) = delete;
    WaylandKeyboard &operator=(const WaylandKeyboard &) = delete;

    /// The surface of this program that has the keyboard, or nullptr for none.
    [[nodiscard]] const wl_surface *focus() const { return m_focus; }

private:
    void moveTo(wl_surface *focus);

    NativePointer<wl_keyboard> m_keyboard;
    std::function<void()> m_moved;
    wl_surface *m_focus = nullptr;
};
