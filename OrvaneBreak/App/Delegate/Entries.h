// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAction>
#include <QMenu>

/// Adds an entry named `name`. The tray matches the entries of two menus by their names.
template <typename Receiver, typename Slot>
QAction *addEntry(QMenu &menu, const QString &name, const QString &title, Receiver *receiver, Slot slot,
                  const QKeySequence &shortcut = {})
{
    QAction *entry = menu.addAction(title, receiver, slot);
    entry->setObjectName(name);
    entry->setShortcut(shortcut);
    return entry;
}
