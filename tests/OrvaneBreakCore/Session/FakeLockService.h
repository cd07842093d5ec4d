// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QHash>
#include <QPair>
#include <QVariant>

/// A service on a connection of its own that answers every call by the method's name, and sends signals.
class FakeLockService final : public QDBusVirtualObject
{
    Q_OBJECT

public:
    FakeLockService(const QString &address, const QString &name, const QHash<QString, QVariant> &answers)
        : m_connectionName(QStringLiteral("service ") + name)
        , m_answers(answers)
    {
        QDBusConnection bus = QDBusConnection::connectToBus(address, m_connectionName);
        isRegistered = bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath) &&
                       bus.registerService(name);
    }

    ~FakeLockService() override { QDBusConnection::disconnectFromBus(m_connectionName); }
    FakeLockService(const FakeLockService &) = delete;
    FakeLockService &operator=(const FakeLockService &) = delete;

    void announce(const QString &path, const QString &interface, const QString &signal,
                  const QVariantList &arguments) const
    {
        QDBusMessage message = QDBusMessage::createSignal(path, interface, signal);
        message.setArguments(arguments);
        QDBusConnection(m_connectionName).send(message);
    }

    [[nodiscard]] QString introspect(const QString & /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        calls << message.member();
        if (!m_answers.contains(message.member()))
            return false;
        return connection.send(message.createReply(m_answers.value(message.member())));
    }

    bool isRegistered = false;
    QStringList calls;

private:
    QString m_connectionName;
    QHash<QString, QVariant> m_answers;
};
