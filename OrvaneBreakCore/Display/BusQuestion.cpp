// SPDX-License-Identifier: GPL-3.0-or-later
#include "BusQuestion.h"

#include <QDBusPendingCallWatcher>
#include <QDBusVariant>

#include <utility>

using namespace Qt::StringLiterals;

QDBusMessage BusQuestion::toRunningService(const QString &service, const QString &path,
                                           const QString &interface, const QString &method)
{
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, interface, method);
    question.setAutoStartService(false);
    return question;
}

QDBusMessage BusQuestion::forProperty(const QString &service, const QString &path, const QString &interface,
                                      const QString &property)
{
    QDBusMessage question = toRunningService(service, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << interface << property;
    return question;
}

QDBusMessage BusQuestion::ask(const QDBusConnection &bus, const QDBusMessage &question,
                              std::chrono::milliseconds limit)
{
    return bus.call(question, QDBus::Block, static_cast<int>(limit.count()));
}

void BusQuestion::askLater(const QDBusConnection &bus, const QDBusMessage &question,
                           std::chrono::milliseconds limit, QObject &context,
                           std::function<void(const QDBusMessage &)> replied)
{
    auto *call =
        new QDBusPendingCallWatcher(bus.asyncCall(question, static_cast<int>(limit.count())), &context);
    QObject::connect(call, &QDBusPendingCallWatcher::finished, &context,
                     [call, replied = std::move(replied)] {
                         replied(call->reply());
                         call->deleteLater();
                     });
}

QVariant BusQuestion::unwrapped(QVariant value)
{
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

QVariant BusQuestion::valueOf(const QDBusMessage &reply)
{
    const bool isAnswer = reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty();
    return isAnswer ? unwrapped(reply.arguments().constFirst()) : QVariant();
}
