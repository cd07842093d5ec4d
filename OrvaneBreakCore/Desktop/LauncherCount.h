// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

/// The number on the application's icon in docks and task bars, by the launcher entry protocol. Where nobody
/// shows such numbers nothing happens. User-interface thread only.
class LauncherCount final : public QObject
{
    Q_OBJECT

public:
    /// `applicationId` names the desktop entry. A bus that is not connected has no launchers.
    explicit LauncherCount(const QString &applicationId,
                           const QDBusConnection &bus = QDBusConnection::sessionBus());

    /// Shows `count`, or no number for 0; told when it changes, and again to every launcher that appears.
    void setCount(int count);

private:
    void announce();

    QDBusConnection m_bus;
    QString m_entry;
    int m_count = 0;
};
