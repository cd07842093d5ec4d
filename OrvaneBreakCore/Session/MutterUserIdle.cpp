// SPDX-License-Identifier: GPL-3.0-or-later
#include "MutterUserIdle.h"

#include "BusQuestion.h"

#include <chrono>

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds monitorAnswerTimeout(500);

const QString &monitorService()
{
    static const QString service = u"org.gnome.Mutter.IdleMonitor"_s;
    return service;
}

} // namespace

MutterUserIdle::MutterUserIdle(const QDBusConnection &bus)
    : m_bus(bus)
{
}

bool MutterUserIdle::isOffered(const QDBusConnection &bus)
{
    QDBusMessage question = BusQuestion::toRunningService(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, u"NameHasOwner"_s);
    question << monitorService();
    return BusQuestion::valueOf(BusQuestion::ask(bus, question, monitorAnswerTimeout)).toBool();
}

InputIdleSeconds MutterUserIdle::secondsSinceLastInput() const
{
    const QDBusMessage question = BusQuestion::toRunningService(
        monitorService(), u"/org/gnome/Mutter/IdleMonitor/Core"_s, monitorService(), u"GetIdletime"_s);
    const QVariant milliseconds =
        BusQuestion::valueOf(BusQuestion::ask(m_bus, question, monitorAnswerTimeout));
    InputIdleSeconds seconds{};
    if (milliseconds.metaType() == QMetaType::fromType<qulonglong>())
        seconds.fill(static_cast<double>(milliseconds.toULongLong()) / 1000.0);
    return seconds;
}
