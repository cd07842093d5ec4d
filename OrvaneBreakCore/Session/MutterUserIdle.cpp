// SPDX-License-Identifier: GPL-3.0-or-later
#include "MutterUserIdle.h"

#include <QDBusMessage>

using namespace Qt::StringLiterals;

namespace {

constexpr int answerTimeoutMilliseconds = 500;

const QString &monitorService()
{
    static const QString service = u"org.gnome.Mutter.IdleMonitor"_s;
    return service;
}

/// The single value of the answer, or an invalid one after an error.
QVariant answer(const QDBusConnection &bus, QDBusMessage call)
{
    call.setAutoStartService(false);
    const QDBusMessage reply = bus.call(call, QDBus::Block, answerTimeoutMilliseconds);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() != 1)
        return {};
    return reply.arguments().constFirst();
}

} // namespace

MutterUserIdle::MutterUserIdle(const QDBusConnection &bus)
    : m_bus(bus)
{
}

bool MutterUserIdle::isOffered(const QDBusConnection &bus)
{
    QDBusMessage call = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                                       u"org.freedesktop.DBus"_s, u"NameHasOwner"_s);
    call << monitorService();
    return answer(bus, call).toBool();
}

InputIdleSeconds MutterUserIdle::secondsSinceLastInput() const
{
    const QVariant milliseconds = answer(
        m_bus, QDBusMessage::createMethodCall(monitorService(), u"/org/gnome/Mutter/IdleMonitor/Core"_s,
                                              monitorService(), u"GetIdletime"_s));
    InputIdleSeconds seconds{};
    if (milliseconds.metaType() == QMetaType::fromType<qulonglong>())
        seconds.fill(static_cast<double>(milliseconds.toULongLong()) / 1000.0);
    return seconds;
}
