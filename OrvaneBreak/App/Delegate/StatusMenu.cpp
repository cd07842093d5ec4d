// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppDelegate.h"
#include "BreakEngine.h"
#include "Entries.h"
#include "Palette.h"
#include "ServerChannel.h"
#include "StandardUpdaterController.h"

#include <QApplication>
#include <QPixmap>

using namespace Qt::StringLiterals;

std::unique_ptr<QMenu> AppDelegate::buildStatusMenu()
{
    auto menu = std::make_unique<QMenu>();
    addEntry(*menu, u"breakToggled"_s,
             m_engine.isActive() ? u"Arrêter les rappels"_s : u"Protéger mes yeux"_s, this,
             &AppDelegate::breakToggled);
    addEntry(*menu, u"breakNow"_s, u"Faire une pause maintenant"_s, this, &AppDelegate::breakNowPressed);
    // Always enabled: while reminders are off, the engine ignores a postponement outside a break.
    addEntry(*menu, u"postpone"_s, u"Reporter de 10 minutes"_s, this, &AppDelegate::postponePressed);
    menu->addSeparator()->setObjectName(u"separatorAfterBreaks"_s);
    if (m_channel.pendingMessage()) {
        QAction *message =
            addEntry(*menu, u"messages"_s, u"Message de Orvane Labs"_s, this, &AppDelegate::showMessages);
        message->setIcon(QPixmap::fromImage(quotaBadgeImage(1, 13, qApp->devicePixelRatio())));
    }
    addEntry(*menu, u"showMainWindow"_s, u"Ouvrir OrvaneBreak…"_s, this, &AppDelegate::showMainWindow);
    menu->addSeparator()->setObjectName(u"separatorAfterWindow"_s);
    addEntry(*menu, u"checkForUpdates"_s, u"Rechercher des mises à jour…"_s, &m_updaterController,
             &SPUStandardUpdaterController::checkForUpdates);
    addEntry(*menu, u"reportProblem"_s, u"Signaler un problème…"_s, this, &AppDelegate::reportProblemPressed);
    menu->addSeparator()->setObjectName(u"separatorBeforeQuit"_s);
    addEntry(*menu, u"quit"_s, u"Quitter OrvaneBreak"_s, this, &AppDelegate::terminate,
             QKeySequence(Qt::CTRL | Qt::Key_Q));
    return menu;
}
