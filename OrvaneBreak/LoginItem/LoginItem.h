// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>

/// Whether the session opens the application at login, as registered with the session. User-interface thread
/// only; every call is synchronous and local.
class LoginItem
{
public:
    LoginItem() = default;
    virtual ~LoginItem() = default;
    LoginItem(const LoginItem &) = delete;
    LoginItem &operator=(const LoginItem &) = delete;

    /// True if the next login on this desktop opens the application.
    [[nodiscard]] virtual bool isEnabled() const = 0;

    /// Registers or unregisters the application. Returns true on success, also if there was nothing to do,
    /// and logs a failure in one line. A session that asks its user may still refuse later.
    [[nodiscard]] virtual bool setEnabled(bool enabled) = 0;

    /// Called when the session refuses the registration after `setEnabled()` has returned; `isEnabled()`
    /// tells the state. One listener.
    std::function<void()> onRefused;

protected:
    /// Logs why a registration failed.
    static void logFailure(const QString &reason);
};
