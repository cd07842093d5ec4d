// SPDX-License-Identifier: GPL-3.0-or-later
#include "MenuMirror.h"

#include <algorithm>

void MenuMirror::setMenu(std::unique_ptr<QMenu> menu)
{
    m_menu.reset(menu.release());

    const QList<QAction *> previous = m_shownMenu.actions();
    QList<QAction *> wanted;
    for (const QAction *entry : m_menu->actions())
        wanted.append(mirrored(*entry, previous));
    for (QAction *action : previous) {
        if (!wanted.contains(action)) {
            m_shownMenu.removeAction(action);
            action->deleteLater();
        }
    }
    for (qsizetype index = 0; index < wanted.size(); ++index) {
        if (m_shownMenu.actions().value(index) == wanted.at(index))
            continue;
        m_shownMenu.removeAction(wanted.at(index));
        m_shownMenu.insertAction(m_shownMenu.actions().value(index), wanted.at(index));
    }
}

QAction *MenuMirror::mirrored(const QAction &entry, const QList<QAction *> &previous)
{
    const auto found = std::find_if(previous.begin(), previous.end(), [&](const QAction *action) {
        return action->objectName() == entry.objectName();
    });
    QAction *action = found == previous.end() ? newMirror(entry) : *found;
    // Setting the same value again would wake the tray host for nothing.
    if (action->text() != entry.text())
        action->setText(entry.text());
    if (action->icon().cacheKey() != entry.icon().cacheKey())
        action->setIcon(entry.icon());
    // Shown beside the text, by the host.
    action->setShortcut(entry.shortcut());
    action->setEnabled(entry.isEnabled());
    action->setVisible(entry.isVisible());
    return action;
}

QAction *MenuMirror::newMirror(const QAction &entry)
{
    auto *action = new QAction(&m_shownMenu);
    action->setObjectName(entry.objectName());
    action->setSeparator(entry.isSeparator());
    connect(action, &QAction::triggered, this, [this, name = entry.objectName()] {
        const QList<QAction *> entries = m_menu->actions();
        const auto current = std::find_if(entries.begin(), entries.end(), [&](const QAction *candidate) {
            return candidate->objectName() == name;
        });
        if (current != entries.end())
            (*current)->trigger();
    });
    return action;
}
