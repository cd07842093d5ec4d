// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UserIdle.h"

#include <QDBusConnection>

/// The idle time as Mutter tells it at org.gnome.Mutter.IdleMonitor. One call on the bus per question; all
/// figures are 0 when it fails or is not answered within half a second. Never starts a service.
class MutterUserIdle final : public UserIdle
{
public:
    explicit MutterUserIdle(const QDBusConnection &bus);

    /// Asks the bus whether the service runs; waits for at most half a second.
    [[nodiscard]] static bool isOffered(const QDBusConnection &bus);

    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override;

private:
    QDBusConnection m_bus;
};
