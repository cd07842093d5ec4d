// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "MenuMirror.h"
#include "TrayItem.h"

#include <QIcon>
#include <QObject>
#include <QSystemTrayIcon>

#include <memory>

/// A StatusNotifierItem on the session bus, with its menu. Appears as soon as a tray host is there, and again
/// after the host restarted. Without a session bus it stays away.
class NotifierTrayItem final : public QObject, public TrayItem
{
    Q_OBJECT

public:
    NotifierTrayItem();
    ~NotifierTrayItem() override;

    [[nodiscard]] bool isHosted() const override { return m_trayIcon != nullptr; }
    void setSymbol(const QString &symbol, const std::optional<QColor> &tint) override;
    void setMenu(std::unique_ptr<QMenu> menu) override;

private Q_SLOTS:
    void lookForHost();
    void busLost();

private:
    void showIcon();

    QString m_symbol;
    QColor m_color;
    QIcon m_icon;
    MenuMirror m_menu;
    std::unique_ptr<QSystemTrayIcon> m_trayIcon;
};
