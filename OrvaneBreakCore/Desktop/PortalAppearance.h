// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

/// Gives the application the light or dark palette that the desktop's settings portal asks for, now and
/// whenever it changes. Where there is no portal, or it has no preference, a desktop with a dark palette
/// keeps it and every other gets the light one.
class PortalAppearance final : public QObject
{
    Q_OBJECT

public:
    /// What the portal says under "color-scheme".
    enum class Scheme
    {
        NoPreference = 0,
        Dark = 1,
        Light = 2
    };

    /// Asks once on `bus`, for at most a quarter of a second, so that the first window has the right colours
    /// from the start. A bus that is not connected is a desktop without a portal.
    explicit PortalAppearance(QDBusConnection bus = QDBusConnection::sessionBus());

    /// The palette of a scheme.
    static void apply(Scheme scheme);

private Q_SLOTS:
    void settingChanged(const QString &nameSpace, const QString &key, const QDBusVariant &value);
};
