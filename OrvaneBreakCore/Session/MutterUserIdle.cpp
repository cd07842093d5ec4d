// SPDX-License-Identifier: GPL-3.0-or-later
#include "MutterUserIdle.h"

#include "BusQuestion.h"

#include <chrono>

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds monitorAnswerTimeout(500);

} // namespace

MutterUserIdle::MutterUserIdle(const QDBusConnection &bus, QLatin1StringView service)
    : m_bus(bus)
    , m_service(service)
{
}

bool MutterUserIdle::isOffered() const
{
    QDBusMessage question = BusQuestion::toRunningService(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, u"NameHasOwner"_s);
    question << m_service;
    return BusQuestion::valueOf(BusQuestion::ask(m_bus, question, monitorAnswerTimeout)).toBool();
}

InputIdleSeconds MutterUserIdle::secondsSinceLastInput() const
{
    const QString path = u'/' + QString(m_service).replace(u'.', u'/') + u"/Core"_s;
    const QDBusMessage question = BusQuestion::toRunningService(m_service, path, m_service, u"GetIdletime"_s);
    const QVariant milliseconds =
        BusQuestion::valueOf(BusQuestion::ask(m_bus, question, monitorAnswerTimeout));
    InputIdleSeconds seconds{};
    if (milliseconds.metaType() == QMetaType::fromType<qulonglong>())
        seconds.fill(static_cast<double>(milliseconds.toULongLong()) / 1000.0);
    return seconds;
}
