// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UserIdle.h"

#include <QDBusConnection>

/// The idle time that Mutter reports at org.gnome.Mutter.IdleMonitor, with one call per question. All figures
/// are 0 if the call fails or is not answered within half a second. Never starts a service.
class MutterUserIdle final : public UserIdle
{
public:
    explicit MutterUserIdle(const QDBusConnection &bus);

    /// Asks the bus whether the service runs, and waits for half a second at most.
    [[nodiscard]] static bool isOffered(const QDBusConnection &bus);

    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override;

private:
    QDBusConnection m_bus;
};
