// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Support/ThreadedBusService.h"

#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>

#include <atomic>

/// The object of the service org.gnome.Mutter.IdleMonitor.
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

/// The object of the service org.cinnamon.Muffin.IdleMonitor.
class FakeMuffinMonitorObject : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.cinnamon.Muffin.IdleMonitor")

public Q_SLOTS:
    qulonglong GetIdletime() { return 12'000; }
};

/// Mutter's service on a bus.
class FakeIdleMonitor : public ThreadedBusService<FakeIdleMonitorObject>
{
public:
    explicit FakeIdleMonitor(const QString &address)
        : ThreadedBusService(address, QStringLiteral("org.gnome.Mutter.IdleMonitor"),
                             QStringLiteral("/org/gnome/Mutter/IdleMonitor/Core"))
    {
    }
};
