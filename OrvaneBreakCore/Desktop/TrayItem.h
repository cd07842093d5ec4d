// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QMenu>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

/// One icon with a menu in the desktop's tray, from construction to destruction. Where no tray is running it
/// waits for one and appears by itself. User-interface thread only.
class TrayItem
{
public:
    TrayItem() = default;
    virtual ~TrayItem() = default;
    TrayItem(const TrayItem &) = delete;
    TrayItem &operator=(const TrayItem &) = delete;

    /// Whether a tray has been there to show the icon, which has not been lost since.
    [[nodiscard]] virtual bool isHosted() const = 0;

    /// Shows the symbol named `symbol` in `tint`; without a tint in a colour that suits any panel. An unknown
    /// symbol leaves the icon empty.
    virtual void setSymbol(const QString &symbol, const std::optional<QColor> &tint) = 0;

    /// Attaches `menu` in place of any earlier one, also while that one is open. Every action has an object
    /// name of its own, by which entries are recognised from one menu to the next.
    virtual void setMenu(std::unique_ptr<QMenu> menu) = 0;

    /// Called from the event loop when what carries the icon to the tray is gone, and no tray shows it any
    /// more.
    std::function<void()> onLost;
};
