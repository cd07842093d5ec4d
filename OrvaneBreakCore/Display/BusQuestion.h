// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariant>

#include <chrono>
#include <functional>

class QObject;

/// Questions to the services on a bus. Every answer has a time limit, and an answer that comes after the
/// limit is ignored.
namespace BusQuestion {

/// A call that does not start the service.
[[nodiscard]] QDBusMessage toRunningService(const QString &service, const QString &path,
                                            const QString &interface, const QString &method);

/// The reading of a property; does not start the service.
[[nodiscard]] QDBusMessage forProperty(const QString &service, const QString &path, const QString &interface,
                                       const QString &property);

/// Sends the question and waits for the reply, for `limit` at most. Returns an error message after an error,
/// after the limit, and on a bus that is not connected.
[[nodiscard]] QDBusMessage ask(const QDBusConnection &bus, const QDBusMessage &question,
                               std::chrono::milliseconds limit);

/// Sends the question and returns at once. Calls `replied` with the reply, or with an error message after an
/// error or after `limit`, from the event loop of `context`; never calls it on a bus that is not connected or
/// once `context` is destroyed.
void askLater(const QDBusConnection &bus, const QDBusMessage &question, std::chrono::milliseconds limit,
              QObject &context, std::function<void(const QDBusMessage &)> replied);

/// The value inside all the D-Bus variants around it.
[[nodiscard]] QVariant unwrapped(QVariant value);

/// The first value of a reply, unwrapped. Invalid for an error message and a reply without
/// values.
[[nodiscard]] QVariant valueOf(const QDBusMessage &reply);

} // namespace BusQuestion
