// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "TrayItem.h"

#include <QStringList>

/// The state that a tray would show.
struct Tray
{
    int items = 0;
    int itemsEverMade = 0;
    QString symbol;
    std::optional<QColor> tint;
    std::unique_ptr<QMenu> menu;
    bool isHosted = true;
    TrayItem *item = nullptr;

    /// Shows the icon, as a tray that starts does.
    void host()
    {
        isHosted = true;
        item->onHosted();
    }

    /// Removes the icon, as a tray that ends does.
    void lose()
    {
        isHosted = false;
        item->onLost();
    }

    /// The texts of the menu, "-" for a separator.
    [[nodiscard]] QStringList menuTexts() const
    {
        QStringList texts;
        for (const QAction *action : menu->actions())
            texts << (action->isSeparator() ? QStringLiteral("-") : action->text());
        return texts;
    }

    /// Chooses the entry with this text.
    void choose(const QString &text) const
    {
        for (QAction *action : menu->actions()) {
            if (action->text() == text) {
                action->trigger();
                return;
            }
        }
        qFatal("no such menu entry");
    }
};

class FakeTrayItem final : public TrayItem
{
public:
    explicit FakeTrayItem(Tray &tray)
        : m_tray(tray)
    {
        ++m_tray.items;
        ++m_tray.itemsEverMade;
        m_tray.item = this;
    }

    ~FakeTrayItem() override
    {
        --m_tray.items;
        m_tray.menu.reset();
    }

    [[nodiscard]] bool isHosted() const override { return m_tray.isHosted; }

    void setSymbol(const QString &symbol, const std::optional<QColor> &tint) override
    {
        m_tray.symbol = symbol;
        m_tray.tint = tint;
    }

    void setMenu(std::unique_ptr<QMenu> menu) override
    {
        // An action of the old menu may still be running.
        if (m_tray.menu)
            m_tray.menu.release()->deleteLater();
        m_tray.menu = std::move(menu);
    }

private:
    Tray &m_tray;
};
