// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QThread>

/// A D-Bus service with one object, whose public slots are its methods. It has its own thread, because the
/// test's thread blocks while it waits for answers.
template <typename Object>
class ThreadedBusService
{
public:
    ThreadedBusService(const QString &address, const QString &name, const QString &path)
        : m_name(name)
    {
        object.moveToThread(&m_thread);
        m_thread.start();
        QDBusConnection bus = QDBusConnection::connectToBus(address, m_name);
        isRegistered =
            bus.registerObject(path, &object, QDBusConnection::ExportAllSlots) && bus.registerService(m_name);
    }

    ~ThreadedBusService()
    {
        QDBusConnection::disconnectFromBus(m_name);
        m_thread.quit();
        m_thread.wait();
    }

    ThreadedBusService(const ThreadedBusService &) = delete;
    ThreadedBusService &operator=(const ThreadedBusService &) = delete;

    Object object;
    bool isRegistered = false;

protected:
    /// The service's own connection, to send signals on.
    [[nodiscard]] QDBusConnection connection() const { return QDBusConnection(m_name); }

private:
    QString m_name;
    QThread m_thread;
};
