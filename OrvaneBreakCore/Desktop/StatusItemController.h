// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "TrayItem.h"

#include <functional>
#include <memory>

/// Owns the eye in the tray: outlined while reminders are off, filled and teal while they are on. Hidden
/// until enabled. User-interface thread only.
class StatusItemController
{
public:
    using MakeTrayItem = std::function<std::unique_ptr<TrayItem>()>;

    explicit StatusItemController(MakeTrayItem makeTrayItem);

    /// True from `enable()` to `disable()`.
    [[nodiscard]] bool isEnabled() const { return m_statusItem != nullptr; }

    /// Whether a tray shows the icon; false while hidden.
    [[nodiscard]] bool isHosted() const { return m_statusItem && m_statusItem->isHosted(); }

    /// Shows the icon unless it is shown already, and attaches `menu`, replacing any earlier one.
    void enable(std::unique_ptr<QMenu> menu);

    /// Removes the icon; does nothing when there is none.
    void disable();

    /// Chooses the variant of the icon. Remembered while hidden.
    void setActive(bool active);

    /// Called when a tray shows the icon, and when no tray does any more.
    std::function<void()> onHosted;
    std::function<void()> onLost;

private:
    void refreshIcon();

    MakeTrayItem m_makeTrayItem;
    std::unique_ptr<TrayItem> m_statusItem;
    bool m_active = false;
};
