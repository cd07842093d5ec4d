// SPDX-License-Identifier: GPL-3.0-or-later
#include "LauncherCount.h"

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QVariantMap>

using namespace Qt::StringLiterals;

LauncherCount::LauncherCount(const QString &applicationId, const QDBusConnection &bus)
    : m_bus(bus)
    , m_entry(u"application://%1.desktop"_s.arg(applicationId))
{
    if (!m_bus.isConnected())
        return;
    auto *watcher = new QDBusServiceWatcher(this);
    watcher->setConnection(m_bus);
    watcher->setWatchMode(QDBusServiceWatcher::WatchForRegistration);
    // The bus names of launchers and of the shells that contain one.
    watcher->setWatchedServices({u"com.canonical.Unity"_s, u"org.kde.plasmashell"_s, u"org.gnome.Shell"_s,
                                 u"com.canonical.Unity.LauncherEntry"_s, u"net.launchpad.plank"_s});
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &LauncherCount::announce);
}

void LauncherCount::setCount(int count)
{
    if (count == m_count)
        return;
    m_count = count;
    announce();
}

void LauncherCount::announce()
{
    if (!m_bus.isConnected())
        return;
    QDBusMessage message = QDBusMessage::createSignal(u"/com/canonical/unity/launcherentry/1"_s,
                                                      u"com.canonical.Unity.LauncherEntry"_s, u"Update"_s);
    message << m_entry
            << QVariantMap{{u"count"_s, static_cast<qlonglong>(m_count)}, {u"count-visible"_s, m_count > 0}};
    m_bus.send(message);
}
