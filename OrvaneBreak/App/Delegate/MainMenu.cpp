// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppDelegate.h"
#include "Entries.h"
#include "MainWindow.h"
#include "StandardUpdaterController.h"

#include <QApplication>
#include <QMenuBar>

using namespace Qt::StringLiterals;

namespace {

/// The focused widget if it has the slot `slot`, for example "undo()"; otherwise null.
QWidget *responder(const char *slot)
{
    QWidget *focused = QApplication::focusWidget();
    return focused && focused->metaObject()->indexOfSlot(slot) >= 0 ? focused : nullptr;
}

/// Adds an entry that calls `command` on the focused text field and is disabled while there is none.
void addEditEntry(QMenu &menu, const QString &title, const char *command, const QKeySequence &shortcut)
{
    const QByteArray slot = QByteArray(command) + "()";
    QAction *entry = addEntry(
        menu, QString::fromLatin1(command), title, &menu,
        [slot, command] {
            if (QWidget *field = responder(slot))
                QMetaObject::invokeMethod(field, command);
        },
        shortcut);
    const auto refresh = [entry, slot] { entry->setEnabled(responder(slot) != nullptr); };
    QObject::connect(qApp, &QApplication::focusChanged, entry, refresh);
    refresh();
}

} // namespace

void AppDelegate::buildMenu()
{
    m_menuBar = std::make_unique<QMenuBar>();
    QMenu &application = *m_menuBar->addMenu(u"OrvaneBreak"_s);
    addEntry(application, u"checkForUpdates"_s, u"Rechercher des mises à jour…"_s, &m_updaterController,
             &SPUStandardUpdaterController::checkForUpdates);
    m_appMessagesItem =
        addEntry(application, u"messages"_s, u"Message de Orvane Labs"_s, this, &AppDelegate::showMessages);
    m_appMessagesItem->setVisible(false);
    addEntry(application, u"reportProblem"_s, u"Signaler un problème…"_s, this,
             &AppDelegate::reportProblemPressed);
    application.addSeparator();
    addEntry(application, u"quit"_s, u"Quitter OrvaneBreak"_s, this, &AppDelegate::terminate,
             QKeySequence(Qt::CTRL | Qt::Key_Q));
    m_menuBar->addMenu(editMenuItem(*m_menuBar));
}

void AppDelegate::addShortcuts(QWidget &window) const
{
    // An entry's shortcut works in every window that has the entry's menu among its actions.
    window.addActions(m_mainWindow->menuBar()->actions());
    window.addAction({}, Qt::CTRL | Qt::Key_W, &window, &QWidget::close);
}

QMenu *AppDelegate::editMenuItem(QWidget &parent)
{
    auto *menu = new QMenu(u"Édition"_s, &parent);
    addEditEntry(*menu, u"Annuler"_s, "undo", QKeySequence(Qt::CTRL | Qt::Key_Z));
    addEditEntry(*menu, u"Rétablir"_s, "redo", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
    menu->addSeparator();
    addEditEntry(*menu, u"Couper"_s, "cut", QKeySequence(Qt::CTRL | Qt::Key_X));
    addEditEntry(*menu, u"Copier"_s, "copy", QKeySequence(Qt::CTRL | Qt::Key_C));
    addEditEntry(*menu, u"Coller"_s, "paste", QKeySequence(Qt::CTRL | Qt::Key_V));
    addEditEntry(*menu, u"Tout sélectionner"_s, "selectAll", QKeySequence(Qt::CTRL | Qt::Key_A));
    return menu;
}
