// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>
#include <QThread>

#include <atomic>

/// What the service at org.gnome.Mutter.IdleMonitor answers.
class FakeIdleMonitorObject : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.Mutter.IdleMonitor")

public:
    enum class Answer
    {
        Figure,
        Error, ///< With the figure in it.
        Text,
        Silence,
    };

    std::atomic<Answer> answer = Answer::Figure;
    std::atomic<qulonglong> milliseconds = 0;
    std::atomic<int> calls = 0;

public Q_SLOTS:
    qulonglong GetIdletime()
    {
        ++calls;
        if (answer == Answer::Figure)
            return milliseconds;
        setDelayedReply(true);
        if (answer == Answer::Error) {
            QDBusMessage error = message().createErrorReply(QDBusError::Failed, {});
            error.setArguments({milliseconds.load()});
            connection().send(error);
        }
        if (answer == Answer::Text)
            connection().send(message().createReply(QStringLiteral("1000")));
        return 0;
    }
};

/// The service on a bus, in a thread of its own because the caller waits for it.
class FakeIdleMonitor
{
public:
    explicit FakeIdleMonitor(const QString &address)
    {
        using namespace Qt::StringLiterals;
        object.moveToThread(&m_thread);
        m_thread.start();
        QDBusConnection bus = QDBusConnection::connectToBus(address, connectionName());
        isRegistered = bus.registerObject(u"/org/gnome/Mutter/IdleMonitor/Core"_s, &object,
                                          QDBusConnection::ExportAllSlots) &&
                       bus.registerService(u"org.gnome.Mutter.IdleMonitor"_s);
    }

    ~FakeIdleMonitor()
    {
        QDBusConnection::disconnectFromBus(connectionName());
        m_thread.quit();
        m_thread.wait();
    }

    FakeIdleMonitor(const FakeIdleMonitor &) = delete;
    FakeIdleMonitor &operator=(const FakeIdleMonitor &) = delete;

    FakeIdleMonitorObject object;
    bool isRegistered = false;

private:
    static QString connectionName() { return QStringLiteral("idle monitor"); }

    QThread m_thread;
};
