// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Tray/NotifierTrayItem.h"

#include "Visuals/Symbols.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QString watcherService = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;

/// Nobody tells the colour of the panel: this grey stands out from white, from black and from what lies
/// between.
const QColor untinted(0x80, 0x84, 0x88);

} // namespace

NotifierTrayItem::NotifierTrayItem()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    auto *serviceWatcher =
        new QDBusServiceWatcher(watcherService, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(serviceWatcher, &QDBusServiceWatcher::serviceRegistered, this, &NotifierTrayItem::lookForHost);
    bus.connect(watcherService, watcherPath, watcherService, u"StatusNotifierHostRegistered"_s, this,
                SLOT(lookForHost()));
    lookForHost();
}

NotifierTrayItem::~NotifierTrayItem() = default;

void NotifierTrayItem::setSymbol(const QString &symbol, const std::optional<QColor> &tint)
{
    m_icon = Symbols::icon(symbol, tint.value_or(untinted));
    if (m_trayIcon)
        m_trayIcon->setIcon(m_icon);
}

void NotifierTrayItem::setMenu(std::unique_ptr<QMenu> menu)
{
    m_menu.reset(menu.release());
    mirrorMenu();
}

void NotifierTrayItem::lookForHost()
{
    QDBusMessage question = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                           u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << watcherService << u"IsStatusNotifierHostRegistered"_s;
    question.setAutoStartService(false);
    auto *call = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        hostAnswered(*call);
        call->deleteLater();
    });
}

void NotifierTrayItem::hostAnswered(const QDBusPendingCallWatcher &call)
{
    const QDBusPendingReply<QDBusVariant> reply = call;
    if (reply.isValid() && reply.value().variant().toBool())
        showIcon();
}

void NotifierTrayItem::showIcon()
{
    // The toolkit decides for the life of the process whether there is a tray when the first icon is made, so
    // none is made before a host is there; from then on it registers the icon again with every new host by
    // itself.
    if (m_trayIcon)
        return;
    m_trayIcon = std::make_unique<QSystemTrayIcon>(m_icon);
    m_trayIcon->setContextMenu(&m_shownMenu);
    m_trayIcon->show();
}

void NotifierTrayItem::mirrorMenu()
{
    // Tray hosts keep the entries of the menu that they were given first and refuse a second menu whose
    // layout is not newer. So one menu stays with the icon and takes over the entries of each menu in turn;
    // those with the same name keep their identity, and a click that was on its way to one of them still does
    // what it says.
    const QList<QAction *> previous = m_shownMenu.actions();
    QList<QAction *> kept;
    for (const QAction *entry : m_menu->actions())
        kept.append(mirror(*entry, previous));
    for (QAction *action : previous) {
        if (!kept.contains(action)) {
            m_shownMenu.removeAction(action);
            action->deleteLater();
        }
    }
    for (qsizetype index = 0; index < kept.size(); ++index) {
        const QAction *present = m_shownMenu.actions().value(index);
        if (present == kept.at(index))
            continue;
        m_shownMenu.removeAction(kept.at(index));
        m_shownMenu.insertAction(m_shownMenu.actions().value(index), kept.at(index));
    }
}

QAction *NotifierTrayItem::mirror(const QAction &entry, const QList<QAction *> &previous)
{
    const auto found = std::find_if(previous.begin(), previous.end(), [&](const QAction *action) {
        return action->objectName() == entry.objectName();
    });
    QAction *action = found == previous.end() ? new QAction(&m_shownMenu) : *found;
    if (found == previous.end()) {
        action->setObjectName(entry.objectName());
        action->setSeparator(entry.isSeparator());
        connect(action, &QAction::triggered, this, [this, name = entry.objectName()] {
            if (auto *current = m_menu->findChild<QAction *>(name))
                current->trigger();
        });
    }
    action->setText(entry.text());
    action->setIcon(entry.icon());
    action->setEnabled(entry.isEnabled());
    action->setVisible(entry.isVisible());
    return action;
}
