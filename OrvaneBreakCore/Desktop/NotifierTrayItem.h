// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "MenuMirror.h"
#include "TrayItem.h"

#include <QIcon>
#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>
#include <QTimer>

#include <memory>

/// A StatusNotifierItem on the session bus, with its menu. Appears as soon as a tray host is running, and
/// again after the host has restarted. On X11, when nobody offers such a host some seconds after the start, a
/// tray of the older XEmbed kind shows the icon for the life of the process. Never appears without a session
/// bus.
class NotifierTrayItem final : public QObject, public TrayItem
{
    Q_OBJECT

public:
    NotifierTrayItem();

    [[nodiscard]] bool isHosted() const override { return m_isHosted; }
    void setSymbol(const QString &symbol, const std::optional<QColor> &tint) override;
    void setMenu(std::unique_ptr<QMenu> menu) override;

private Q_SLOTS:
    void lookForHost();
    void hostLost();
    void busLost();

private:
    void lookForEmbeddingTray();
    void showIcon();
    void setHosted(bool isHosted);
    void openMenu(QPoint place);

    QString m_symbol;
    QColor m_color;
    QIcon m_icon;
    MenuMirror m_menu;
    QTimer m_embeddingTimer;
    bool m_isHosted = false;
    std::unique_ptr<QSystemTrayIcon> m_trayIcon;
    std::unique_ptr<QObject> m_object;
    std::unique_ptr<QMenu> m_openMenu;
};
