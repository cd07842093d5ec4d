// SPDX-License-Identifier: GPL-3.0-or-later
#include "NotifierTrayItem.h"

#include "BusQuestion.h"
#include "Symbols.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString watcherService = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;

constexpr std::chrono::seconds hostAnswerTimeout(25);

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
    // What the bus library says to its own process. The toolkit never connects to another session bus.
    bus.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s,
                u"Disconnected"_s, this, SLOT(busLost()));
    lookForHost();
}

NotifierTrayItem::~NotifierTrayItem() = default;

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
    const QDBusMessage question = BusQuestion::forProperty(watcherService, watcherPath, watcherService,
                                                           u"IsStatusNotifierHostRegistered"_s);
    BusQuestion::askLater(QDBusConnection::sessionBus(), question, hostAnswerTimeout, *this,
                          [this](const QDBusMessage &reply) {
                              if (BusQuestion::valueOf(reply).toBool())
                                  showIcon();
                          });
}

void NotifierTrayItem::busLost()
{
    m_trayIcon.reset();
    if (onLost)
        onLost();
}

void NotifierTrayItem::showIcon()
{
    // The toolkit decides for the life of the process whether there is a tray when the first icon is made, so
    // none is made before a host is there; from then on it registers the icon again with every new host by
    // itself.
    if (m_trayIcon)
        return;
    m_trayIcon = std::make_unique<QSystemTrayIcon>(m_icon);
    m_trayIcon->setContextMenu(m_menu.shownMenu());
    m_trayIcon->show();
}
