// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QSet>
#include <QString>
#include <QVariantMap>

/// Whether the session is locked, as the lock screens on the session bus and the login service on the system
/// bus report it. From the announcement of a suspend until the resume it counts as locked. A service that
/// leaves its bus reports nothing any more, and is asked again when it returns. Never starts a service and
/// never waits for an answer. User-interface thread only.
class SessionLock final : public QObject
{
    Q_OBJECT

public:
    /// Asks the services that run on both buses. Until they have answered the session counts as unlocked; a
    /// service that does not answer within five seconds counts as unlocked until it reports a change. A bus
    /// that is not connected has no services.
    explicit SessionLock(const QDBusConnection &sessionBus = QDBusConnection::sessionBus(),
                         const QDBusConnection &systemBus = QDBusConnection::systemBus());

    /// True while at least one service reports that the session is locked.
    [[nodiscard]] bool isLocked() const { return !m_lockedBy.isEmpty(); }

private Q_SLOTS:
    void activeChanged(bool isActive, const QDBusMessage &signal);
    void propertiesChanged(const QString &interface, const QVariantMap &changed);
    void prepareForSleep(bool isComing);

private:
    void watchScreenSavers();
    void watchLogin();
    void ownerChanged(const QString &service, const QString &newOwner);
    void askScreenSaver(const QString &service);
    void askLogin();
    void askDisplaySession();
    void askLoginSession(const QString &path);
    void setLocked(const QString &service, const QVariant &isLocked);

    QDBusConnection m_sessionBus;
    QDBusConnection m_systemBus;
    QDBusServiceWatcher m_sessionServices;
    QDBusServiceWatcher m_systemServices;
    QString m_loginSession; ///< The object path that is listened to, or empty.
    QSet<QString> m_lockedBy;
};
