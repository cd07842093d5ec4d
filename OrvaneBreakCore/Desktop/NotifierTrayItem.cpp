// SPDX-License-Identifier: GPL-3.0-or-later
#include "NotifierTrayItem.h"

#include "Symbols.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString watcherService = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;

/// The colour of the panel is unknown; this grey is visible on light and dark ones.
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
    // The bus library sends this signal to its own process. Qt does not connect to the session bus again.
    bus.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s,
                u"Disconnected"_s, this, SLOT(busLost()));
    lookForHost();
}

void NotifierTrayItem::setSymbol(const QString &symbol, const std::optional<QColor> &tint)
{
    const QColor color = tint.value_or(untinted);
    if (symbol == m_symbol && color == m_color)
        return;
    m_symbol = symbol;
    m_color = color;
    m_icon = Symbols::icon(symbol, color);
    if (m_trayIcon)
        m_trayIcon->setIcon(m_icon);
}

void NotifierTrayItem::setMenu(std::unique_ptr<QMenu> menu)
{
    m_menu.setMenu(std::move(menu));
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

void NotifierTrayItem::busLost()
{
    m_trayIcon.reset();
    if (onLost)
        onLost();
}

void NotifierTrayItem::hostAnswered(const QDBusPendingCallWatcher &call)
{
    const QDBusPendingReply<QDBusVariant> reply = call;
    if (reply.isValid() && reply.value().variant().toBool())
        showIcon();
}

void NotifierTrayItem::showIcon()
{
    // Qt decides when the first icon is created, and for the life of the process, whether there is a tray, so
    // no icon is created before a host is running. From then on Qt registers the icon with every new host.
    if (m_trayIcon)
        return;
    m_trayIcon = std::make_unique<QSystemTrayIcon>(m_icon);
    m_trayIcon->setContextMenu(m_menu.shownMenu());
    m_trayIcon->show();
}
