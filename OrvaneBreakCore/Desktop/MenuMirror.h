// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMenu>
#include <QObject>

#include <memory>

/// A menu that exists as long as the tray icon and shows the entries of the latest menu it was given. Tray
/// hosts keep the entries of their first menu and reject another one whose layout revision is not newer.
/// Entries with the same object name keep their identity, so a click that is already on its way triggers the
/// right entry.
class MenuMirror final : public QObject
{
    Q_OBJECT

public:
    /// The menu for the tray.
    [[nodiscard]] QMenu *shownMenu() { return &m_shownMenu; }

    /// Shows the entries of `menu` in place of the earlier ones; a click triggers the entry of the latest
    /// menu.
    void setMenu(std::unique_ptr<QMenu> menu);

private:
    /// An entry may replace the menu that it is in, so the deletion is deferred.
    struct DeferredDelete
    {
        void operator()(QObject *object) const { object->deleteLater(); }
    };

    [[nodiscard]] QAction *mirrored(const QAction &entry, const QList<QAction *> &previous);
    [[nodiscard]] QAction *newMirror(const QAction &entry);

    std::unique_ptr<QMenu, DeferredDelete> m_menu;
    QMenu m_shownMenu;
};
