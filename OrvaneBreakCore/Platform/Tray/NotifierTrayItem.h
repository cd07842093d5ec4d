// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "StatusItem/TrayItem.h"

#include <QIcon>
#include <QObject>
#include <QSystemTrayIcon>

#include <memory>

class QDBusPendingCallWatcher;

/// A StatusNotifierItem on the session bus, with its menu. Appears as soon as a tray host is there, and again
/// after the host restarted. Without a session bus it stays away.
class NotifierTrayItem final : public QObject, public TrayItem
{
    Q_OBJECT

public:
    NotifierTrayItem();
    ~NotifierTrayItem() override;

    void setSymbol(const QString &symbol, const std::optional<QColor> &tint) override;
    void setMenu(std::unique_ptr<QMenu> menu) override;

private Q_SLOTS:
    void lookForHost();

private:
    /// A menu goes by itself after the entry that was clicked in it has done its work.
    struct DeferredDelete
    {
        void operator()(QObject *object) const { object->deleteLater(); }
    };

    void hostAnswered(const QDBusPendingCallWatcher &call);
    void showIcon();
    void mirrorMenu();
    QAction *mirror(const QAction &entry, const QList<QAction *> &previous);

    QIcon m_icon;
    std::unique_ptr<QMenu, DeferredDelete> m_menu;
    QMenu m_shownMenu;
    std::unique_ptr<QSystemTrayIcon> m_trayIcon;
};
