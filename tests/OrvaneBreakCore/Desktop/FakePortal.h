// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Support/ThreadedBusService.h"

#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>

#include <atomic>

/// The settings portal of a desktop.
class FakePortalSettings : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    std::atomic<unsigned> scheme = 0;
    std::atomic<unsigned> contrast = 0;
    std::atomic<const char *> font = "";
    std::atomic<const char *> fontOfKde = "";

public Q_SLOTS:
    /// Portals wrap the value in two variants.
    QDBusVariant Read(const QString & /*nameSpace*/, const QString &key)
    {
        QVariant value(key == QStringLiteral("contrast") ? contrast.load() : scheme.load());
        if (key == QStringLiteral("font-name"))
            value = QString::fromLatin1(font.load());
        return QDBusVariant(QVariant::fromValue(QDBusVariant(value)));
    }
};

/// The portal on a bus.
class FakePortal : public ThreadedBusService<FakePortalSettings>
{
public:
    FakePortal(const QString &address, unsigned scheme)
        : ThreadedBusService(address, QStringLiteral("org.freedesktop.portal.Desktop"), path())
    {
        object.scheme = scheme;
    }

    /// Announces a changed setting.
    void announce(const QString &nameSpace, const QString &key, const QVariant &value) const
    {
        QDBusMessage message = QDBusMessage::createSignal(
            path(), QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
        message << nameSpace << key << QVariant::fromValue(QDBusVariant(value));
        connection().send(message);
    }

private:
    static QString path() { return QStringLiteral("/org/freedesktop/portal/desktop"); }
};
