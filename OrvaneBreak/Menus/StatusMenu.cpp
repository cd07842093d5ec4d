// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/AppDelegate.h"
#include "Engine/BreakEngine.h"

#include <QMenu>

using namespace Qt::StringLiterals;

namespace {

/// Adds an entry named `name`; the name tells the tray which entries of two menus are the same.
template <typename Receiver, typename Slot>
QAction *addEntry(QMenu &menu, const QString &name, const QString &title, Receiver *receiver, Slot slot)
{
    QAction *entry = menu.addAction(title, receiver, slot);
    entry->setObjectName(name);
    return entry;
}

} // namespace

std::unique_ptr<QMenu> AppDelegate::buildStatusMenu()
{
    auto menu = std::make_unique<QMenu>();
    addEntry(*menu, u"breakToggled"_s,
             m_engine.isActive() ? u"Arrêter les rappels"_s : u"Protéger mes yeux"_s, this,
             &AppDelegate::breakToggled);
    addEntry(*menu, u"breakNow"_s, u"Faire une pause maintenant"_s, this, &AppDelegate::breakNowPressed);
    // Always selectable: the engine accepts a postponement while reminders are off, and does nothing then.
    addEntry(*menu, u"postpone"_s, u"Reporter de 10 minutes"_s, this, &AppDelegate::postponePressed);
    menu->addSeparator()->setObjectName(u"separatorBeforeQuit"_s);
    addEntry(*menu, u"quit"_s, u"Quitter OrvaneBreak"_s, this, &AppDelegate::terminate);
    return menu;
}
