// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QSet>
#include <QString>
#include <QVariantMap>

#include <functional>

/// Whether the session is locked, as its lock screens and the login service say. Listens only; nothing is
/// started for it, and nothing waits for an answer. User-interface thread only.
class SessionLock final : public QObject
{
    Q_OBJECT

public:
    /// Asks the services on both buses, whichever are there; until they have answered the session counts as
    /// unlocked. A bus that is not connected has no services.
    explicit SessionLock(const QDBusConnection &sessionBus = QDBusConnection::sessionBus(),
                         const QDBusConnection &systemBus = QDBusConnection::systemBus());

    /// True while any of the services says so.
    [[nodiscard]] bool isLocked() const { return !m_lockedBy.isEmpty(); }

    /// Called when the session has become locked.
    std::function<void()> onLocked;

private Q_SLOTS:
    void activeChanged(bool isActive, const QDBusMessage &signal);
    void propertiesChanged(const QString &interface, const QVariantMap &changed);

private:
    void listenToScreenSavers(QDBusConnection bus);
    void findLoginSession(const QDBusConnection &bus);
    void listenToLoginSession(QDBusConnection bus, const QString &path);
    void ask(const QDBusConnection &bus, const QDBusMessage &question,
             std::function<void(const QVariant &)> answered);
    void setLocked(const QString &by, const QVariant &isLocked);

    QSet<QString> m_lockedBy;
};
