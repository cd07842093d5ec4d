// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>
#include <optional>

/// Whether the session opens the application at login. The only truth is what the session has registered.
/// User-interface thread; every call is synchronous and local.
class LoginItem
{
public:
    LoginItem() = default;
    virtual ~LoginItem() = default;
    LoginItem(const LoginItem &) = delete;
    LoginItem &operator=(const LoginItem &) = delete;

    /// True when the next login on this desktop opens the application.
    [[nodiscard]] virtual bool isEnabled() const = 0;

    /// Registers or unregisters the application. Returns what went wrong in one line, or nothing on success,
    /// also when there was nothing to do. Success may still be refused later where the session asks its user.
    [[nodiscard]] virtual std::optional<QString> setEnabled(bool enabled) = 0;

    /// Called when the session has refused what `setEnabled()` asked for after that had returned; how things
    /// are then is what `isEnabled()` says. One listener.
    std::function<void()> onRefused;
};
