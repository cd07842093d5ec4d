// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

/// Sets the application's palette to the light or dark one that the desktop's settings portal asks for, in
/// high contrast if it asks for that, now and at every change. Without a portal or a preference, keeps the
/// desktop's palette if that is dark and otherwise sets the light one. Sets the application's font to the
/// portal's, once.
class PortalAppearance final : public QObject
{
    Q_OBJECT

public:
    /// The values of the portal's "color-scheme".
    enum class Scheme
    {
        NoPreference = 0,
        Dark = 1,
        Light = 2
    };

    /// Queries the portal on `bus` and waits at most a quarter of a second for its first answer, so that the
    /// first window has the right colours from the start. A bus that is not connected has no portal.
    explicit PortalAppearance(QDBusConnection bus = QDBusConnection::sessionBus());

private Q_SLOTS:
    void settingChanged(const QString &nameSpace, const QString &key, const QDBusVariant &value);

private:
    void apply() const;

    Scheme m_scheme = Scheme::NoPreference;
    bool m_isHighContrast = false;
};
