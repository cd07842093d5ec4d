// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct wl_display;
struct wl_global;
struct wl_resource;

/// A compositor that has only seats and the idle protocols, and does nothing unless it is pumped.
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

    /// Each returns the object to withdraw later.
    wl_global *offerSeat(int version = 7);
    wl_global *offerExtIdleNotify(int version = 2);
    wl_global *offerKdeIdle();
    void withdraw(wl_global *global);

    /// Withdraws a global at the moment at which a client is told of a later one.
    void withdrawWhenTold(wl_global *global, const wl_global *later);

    /// Handles what clients have sent and sends what is to be sent; never waits.
    void pump();

    /// Reports to every notification. With an inhibitor, only to those that ignore inhibitors.
    void sendIdled(bool isInhibited = false);
    void sendResumed();

    /// Closes all connections, as a compositor that crashes does.
    void die();

    [[nodiscard]] const std::vector<Notification> &notifications() const { return m_notifications; }
    /// How many notifications clients have asked for, with those that are gone.
    [[nodiscard]] int notificationRequests() const { return m_notificationRequests; }
    [[nodiscard]] int registries() const { return m_registries; }
    [[nodiscard]] int seatBindings() const { return m_seatBindings; }
    [[nodiscard]] bool hasClient() const;

    /// For what else a test has the compositor offer.
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
