// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct wl_display;
struct wl_global;
struct wl_resource;

/// A Wayland compositor with only seats and the idle protocols. It handles requests only in `pump()`.
class FakeCompositor
{
public:
    /// The requests that make a notification.
    enum class Kind
    {
        ExtIdle,      ///< ext-idle-notify-v1, subject to idle inhibitors
        ExtInputIdle, ///< ext-idle-notify-v1 version 2, input alone
        KdeIdle,
    };

    struct Notification
    {
        wl_resource *resource;
        std::uint32_t timeout; ///< In milliseconds, as the client asked for it.
        Kind kind;
    };

    FakeCompositor();
    ~FakeCompositor();
    FakeCompositor(const FakeCompositor &) = delete;
    FakeCompositor &operator=(const FakeCompositor &) = delete;

    /// The client's end of a new connection.
    [[nodiscard]] int connectClient();

    /// Listens at a free name in XDG_RUNTIME_DIR and returns it.
    [[nodiscard]] std::string listen();

    /// Each announces a global and returns it for `withdraw()`.
    wl_global *offerSeat(int version = 7);
    wl_global *offerExtIdleNotify(int version = 2);
    wl_global *offerKdeIdle();
    void withdraw(wl_global *global);

    /// Withdraws `global` while a client is being told of `later`.
    void withdrawWhenTold(wl_global *global, const wl_global *later);

    /// Handles pending requests and flushes events; never waits.
    void pump();

    /// Reports to every notification. With an inhibitor, only to those that ignore inhibitors.
    void sendIdled(bool isInhibited = false);
    void sendResumed();

    /// Closes all connections, as a compositor that crashes does.
    void die();

    [[nodiscard]] const std::vector<Notification> &notifications() const { return m_notifications; }
    /// How many notifications were ever requested, destroyed ones included.
    [[nodiscard]] int notificationRequests() const { return m_notificationRequests; }
    [[nodiscard]] int registries() const { return m_registries; }
    [[nodiscard]] int seatBindings() const { return m_seatBindings; }
    [[nodiscard]] bool hasClient() const;

    /// For the globals of other fakes.
    [[nodiscard]] wl_display *display() const { return m_display; }

private:
    struct Requests;
    friend struct Requests;

    wl_display *m_display;
    wl_global *m_withdrawn = nullptr;
    const wl_global *m_later = nullptr;
    std::vector<Notification> m_notifications;
    int m_notificationRequests = 0;
    int m_registries = 0;
    int m_seatBindings = 0;
};
