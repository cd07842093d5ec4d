// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QMenu>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

/// One icon with a menu in the desktop's tray, from construction to destruction. Without a tray, it appears
/// as soon as one starts. User-interface thread only.
class TrayItem
{
public:
    TrayItem() = default;
    virtual ~TrayItem() = default;
    TrayItem(const TrayItem &) = delete;
    TrayItem &operator=(const TrayItem &) = delete;

    /// Whether a tray shows the icon, as far as its host tells.
    [[nodiscard]] virtual bool isHosted() const = 0;

    /// Shows the symbol named `symbol` in `tint`; without a tint, in a colour that suits any panel. An
    /// unknown symbol leaves the icon empty.
    virtual void setSymbol(const QString &symbol, const std::optional<QColor> &tint) = 0;

    /// Attaches `menu` in place of any earlier one, also while that one is open. Every action has a unique
    /// object name, by which entries are matched from one menu to the next.
    virtual void setMenu(std::unique_ptr<QMenu> menu) = 0;

    /// Called from the event loop whenever `isHosted()` becomes true.
    std::function<void()> onHosted;

    /// Called from the event loop when no tray shows the icon any more. It returns with the next tray, except
    /// after the loss of the session bus.
    std::function<void()> onLost;
};
