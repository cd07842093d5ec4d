// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

/// The overview of GNOME Shell, which is open after the login. While it is, the shell shows no
/// override-redirect window and keeps the keyboard. Never waits, and does nothing on other desktops.
/// User-interface thread only.
class GnomeOverview final : public QObject
{
    Q_OBJECT

public:
    explicit GnomeOverview(const QDBusConnection &sessionBus = QDBusConnection::sessionBus());

    /// Closes the overview now and whenever it opens, twenty times at most, until `leaveAlone()`.
    void keepClosed();
    void leaveAlone();

private Q_SLOTS:
    void propertiesChanged(const QString &interface, const QVariantMap &changed);

private:
    void closeIfOpen(const QVariant &isOpen);

    QDBusConnection m_bus;
    int m_attemptsLeft = 0;
};
