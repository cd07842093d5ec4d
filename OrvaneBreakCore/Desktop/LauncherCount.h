// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

/// The number on the application's icon in docks and task bars, sent with the launcher entry protocol. Has no
/// effect on desktops that show no such numbers. User-interface thread only.
class LauncherCount final : public QObject
{
    Q_OBJECT

public:
    /// `applicationId` names the desktop entry. Without a connected bus nothing is sent.
    explicit LauncherCount(const QString &applicationId,
                           const QDBusConnection &bus = QDBusConnection::sessionBus());

    /// Shows `count`, or no number for 0; announced when it changes, and again to every launcher that starts.
    void setCount(int count);

private:
    void announce();

    QDBusConnection m_bus;
    QString m_entry;
    int m_count = 0;
};
