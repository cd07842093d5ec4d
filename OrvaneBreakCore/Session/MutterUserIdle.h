// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UserIdle.h"

#include <QDBusConnection>
#include <QString>

/// The idle time that Mutter, or Cinnamon's Muffin, reports on the session bus, with one call per question.
/// All figures are 0 if the call fails or is not answered within half a second. Never starts a service.
class MutterUserIdle final : public UserIdle
{
public:
    static constexpr QLatin1StringView mutter{"org.gnome.Mutter.IdleMonitor"};
    static constexpr QLatin1StringView muffin{"org.cinnamon.Muffin.IdleMonitor"};

    /// `service` is one of the names above.
    MutterUserIdle(const QDBusConnection &bus, QLatin1StringView service);

    /// Asks the bus whether the service runs, and waits for half a second at most.
    [[nodiscard]] bool isOffered() const;

    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override;

private:
    QDBusConnection m_bus;
    QString m_service; ///< And its interface.
};
