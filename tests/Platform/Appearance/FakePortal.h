// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QThread>

#include <atomic>

/// The settings of a desktop, as the portal tells them.
class FakePortalSettings : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    std::atomic<unsigned> scheme = 0;

public Q_SLOTS:
    /// The value in a variant in a variant, as portals answer.
    QDBusVariant Read(const QString & /*nameSpace*/, const QString & /*key*/)
    {
        return QDBusVariant(QVariant::fromValue(QDBusVariant(scheme.load())));
    }
};

/// The portal on a bus, in a thread of its own because the caller waits for its answer.
class FakePortal
{
public:
    explicit FakePortal(const QString &address, unsigned scheme)
    {
        using namespace Qt::StringLiterals;
        settings.scheme = scheme;
        settings.moveToThread(&m_thread);
        m_thread.start();
        QDBusConnection bus = QDBusConnection::connectToBus(address, connectionName());
        isRegistered = bus.registerObject(u"/org/freedesktop/portal/desktop"_s, &settings,
                                          QDBusConnection::ExportAllSlots) &&
                       bus.registerService(u"org.freedesktop.portal.Desktop"_s);
    }

    ~FakePortal()
    {
        QDBusConnection::disconnectFromBus(connectionName());
        m_thread.quit();
        m_thread.wait();
    }

    FakePortal(const FakePortal &) = delete;
    FakePortal &operator=(const FakePortal &) = delete;

    /// Announces a changed setting.
    static void announce(const QString &nameSpace, const QString &key, const QVariant &value)
    {
        using namespace Qt::StringLiterals;
        QDBusMessage message = QDBusMessage::createSignal(
            u"/org/freedesktop/portal/desktop"_s, u"org.freedesktop.portal.Settings"_s, u"SettingChanged"_s);
        message << nameSpace << key << QVariant::fromValue(QDBusVariant(value));
        QDBusConnection(connectionName()).send(message);
    }

    FakePortalSettings settings;
    bool isRegistered = false;

private:
    static QString connectionName() { return QStringLiteral("portal"); }

    QThread m_thread;
};
