// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMenu>
#include <QObject>

#include <memory>

/// One menu that lives as long as the tray icon and shows the entries of each menu it is given in turn. Tray
/// hosts keep the entries of the menu they were given first and refuse a second menu whose layout is not
/// newer. Entries with the same object name keep their identity, so a click that was on its way to one of
/// them still does what it says.
class MenuMirror final : public QObject
{
    Q_OBJECT

public:
    MenuMirror();

    /// The menu to hand to the tray.
    [[nodiscard]] QMenu *shownMenu() { return &m_shownMenu; }

    /// Shows the entries of `menu` in place of the earlier ones; a click triggers the entry of the latest
    /// menu.
    void setMenu(std::unique_ptr<QMenu> menu);

private:
    /// A menu goes by itself after the entry that was clicked in it has done its work.
    struct DeferredDelete
    {
        void operator()(QObject *object) const { object->deleteLater(); }
    };

    [[nodiscard]] QAction *mirrored(const QAction &entry, const QList<QAction *> &previous);
    [[nodiscard]] QAction *newMirror(const QAction &entry);

    std::unique_ptr<QMenu, DeferredDelete> m_menu;
    QMenu m_shownMenu;
};
