// SPDX-License-Identifier: GPL-3.0-or-later
#include "NotifierTrayItem.h"

#include "BusQuestion.h"
#include "NativePointers.h"
#include "NotifierObject.h"
#include "Symbols.h"
#include "X11Connection.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString watcherService = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;

constexpr std::chrono::seconds hostAnswerTimeout(25);

/// The colour of the panel is unknown; this grey is visible on light and dark ones.
const QColor untinted(0x80, 0x84, 0x88);

/// A tray host starts with the desktop; panels come within seconds of each other.
constexpr std::chrono::seconds firstEmbeddingTimeout(3);
constexpr std::chrono::seconds lastEmbeddingTimeout(30);

/// Whether a tray of the XEmbed kind is running on the first X screen.
bool isEmbeddingTrayRunning()
{
    xcb_connection_t *connection = X11Connection::ofToolkit();
    if (!connection)
        return false;
    const xcb_atom_t selection = X11Connection::atom(connection, "_NET_SYSTEM_TRAY_S0");
    const XcbReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, selection), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace

NotifierTrayItem::NotifierTrayItem()
{
    m_embeddingTimer.setSingleShot(true);
    m_embeddingTimer.setInterval(firstEmbeddingTimeout);
    connect(&m_embeddingTimer, &QTimer::timeout, this, &NotifierTrayItem::lookForEmbeddingTray);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    auto *serviceWatcher =
        new QDBusServiceWatcher(watcherService, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(serviceWatcher, &QDBusServiceWatcher::serviceRegistered, this, &NotifierTrayItem::lookForHost);
    connect(serviceWatcher, &QDBusServiceWatcher::serviceUnregistered, this, &NotifierTrayItem::hostLost);
    bus.connect(watcherService, watcherPath, watcherService, u"StatusNotifierHostRegistered"_s, this,
                SLOT(lookForHost()));
    bus.connect(watcherService, watcherPath, watcherService, u"StatusNotifierHostUnregistered"_s, this,
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
    if (m_object)
        m_object->findChild<NotifierObject *>()->setIcon(m_icon);
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
                              if (reply.type() == QDBusMessage::ErrorMessage)
                                  m_embeddingTimer.start();
                              else if (BusQuestion::valueOf(reply).toBool())
                                  showIcon();
                              else
                                  setHosted(false);
                          });
}

void NotifierTrayItem::hostLost()
{
    setHosted(false);
}

void NotifierTrayItem::setHosted(bool isHosted)
{
    if (isHosted == m_isHosted)
        return;
    m_isHosted = isHosted;
    if (const auto &listener = isHosted ? onHosted : onLost)
        listener();
}

void NotifierTrayItem::busLost()
{
    m_object.reset();
    m_trayIcon.reset();
    setHosted(false);
}

void NotifierTrayItem::lookForEmbeddingTray()
{
    if (m_trayIcon)
        return;
    if (isEmbeddingTrayRunning())
        showIcon();
    else if (m_embeddingTimer.intervalAsDuration() < lastEmbeddingTimeout)
        m_embeddingTimer.start(2 * m_embeddingTimer.intervalAsDuration());
}

void NotifierTrayItem::showIcon()
{
    // Qt decides when the first icon is created, and for the life of the process, which kind of tray there
    // is, so no icon is created before a tray is running. From then on Qt registers the icon with every new
    // host.
    if (m_trayIcon) {
        setHosted(true);
        return;
    }
    m_trayIcon = std::make_unique<QSystemTrayIcon>(m_icon);
    m_trayIcon->setContextMenu(m_menu.shownMenu());
    connect(m_trayIcon.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::MiddleClick)
                    openMenu(QCursor::pos());
            });
    m_trayIcon->show();
    m_object = NotifierObject::replaceOfQt(m_icon, [this](QPoint place) { openMenu(place); });
    setHosted(true);
}

void NotifierTrayItem::openMenu(QPoint place)
{
    // Qt shows a menu of the tray icon only through the host.
    m_openMenu = std::make_unique<QMenu>();
    m_openMenu->addActions(m_menu.shownMenu()->actions());
    m_openMenu->popup(place);
}
