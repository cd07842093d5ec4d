// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QHash>
#include <QPair>
#include <QVariant>

/// A service on a connection of its own that answers every call by the name of its method, or by that name, a
/// space and the call's last argument, and sends signals. It replies to a method without an answer with an
/// error, and never to one whose answer is an invalid value.
class FakeBusService final : public QDBusVirtualObject
{
public:
    FakeBusService(const QString &address, const QString &name,
                   const QHash<QString, QVariant> &answersByMethod)
        : answers(answersByMethod)
        , m_connectionName(QStringLiteral("service ") + name)
    {
        QDBusConnection bus = QDBusConnection::connectToBus(address, m_connectionName);
        isRegistered = bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath) &&
                       bus.registerService(name);
    }

    ~FakeBusService() override { QDBusConnection::disconnectFromBus(m_connectionName); }
    FakeBusService(const FakeBusService &) = delete;
    FakeBusService &operator=(const FakeBusService &) = delete;

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
        const QVariant last = message.arguments().isEmpty() ? QVariant() : message.arguments().constLast();
        const QString detailed = message.member() + QLatin1Char(' ') + last.toString();
        const QString key = answers.contains(detailed) ? detailed : message.member();
        if (!answers.contains(key))
            return false;
        const QVariant answer = answers.value(key);
        return !answer.isValid() || connection.send(message.createReply(answer));
    }

    bool isRegistered = false;
    QStringList calls;
    QHash<QString, QVariant> answers;

private:
    QString m_connectionName;
};
