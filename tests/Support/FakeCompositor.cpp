// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeCompositor.h"

#include <ext-idle-notify-v1-server-protocol.h>
#include <idle-server-protocol.h>
#include <sys/socket.h>
#include <wayland-server.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <utility>

/// The request handlers. The user data of each resource and global is the compositor.
struct FakeCompositor::Requests
{
    static FakeCompositor &self(void *data) { return *static_cast<FakeCompositor *>(data); }

    static void destroy(wl_client *, wl_resource *resource) { wl_resource_destroy(resource); }

    static void rememberNotification(wl_resource *resource, std::uint32_t timeout, Kind kind)
    {
        FakeCompositor &compositor = self(wl_resource_get_user_data(resource));
        compositor.m_notifications.push_back({resource, timeout, kind});
        ++compositor.m_notificationRequests;
    }

    static void forgetNotification(wl_resource *resource)
    {
        std::erase_if(self(wl_resource_get_user_data(resource)).m_notifications,
                      [resource](const Notification &each) { return each.resource == resource; });
    }

    static void bindSeat(wl_client *client, void *data, std::uint32_t version, std::uint32_t id)
    {
        static const struct wl_seat_interface requests{nullptr, nullptr, nullptr, destroy};
        wl_resource *resource = wl_resource_create(client, &wl_seat_interface, int(version), id);
        wl_resource_set_implementation(resource, &requests, data, [](wl_resource *gone) {
            --self(wl_resource_get_user_data(gone)).m_seatBindings;
        });
        ++self(data).m_seatBindings;
        wl_seat_send_capabilities(resource, WL_SEAT_CAPABILITY_POINTER);
    }

    template <Kind kind>
    static void getExtNotification(wl_client *client, wl_resource *notifier, std::uint32_t id,
                                   std::uint32_t timeout, wl_resource *)
    {
        static const struct ext_idle_notification_v1_interface requests{destroy};
        void *data = wl_resource_get_user_data(notifier);
        wl_resource *resource = wl_resource_create(client, &ext_idle_notification_v1_interface,
                                                   wl_resource_get_version(notifier), id);
        wl_resource_set_implementation(resource, &requests, data, forgetNotification);
        rememberNotification(resource, timeout, kind);
    }

    static void bindExt(wl_client *client, void *data, std::uint32_t version, std::uint32_t id)
    {
        static const struct ext_idle_notifier_v1_interface requests{
            destroy, getExtNotification<Kind::ExtIdle>, getExtNotification<Kind::ExtInputIdle>};
        wl_resource *resource = wl_resource_create(client, &ext_idle_notifier_v1_interface, int(version), id);
        wl_resource_set_implementation(resource, &requests, data, nullptr);
    }

    static void getKdeTimeout(wl_client *client, wl_resource *idle, std::uint32_t id, wl_resource *,
                              std::uint32_t timeout)
    {
        static const struct org_kde_kwin_idle_timeout_interface requests{destroy,
                                                                         [](wl_client *, wl_resource *) {}};
        void *data = wl_resource_get_user_data(idle);
        wl_resource *resource = wl_resource_create(client, &org_kde_kwin_idle_timeout_interface, 1, id);
        wl_resource_set_implementation(resource, &requests, data, forgetNotification);
        rememberNotification(resource, timeout, Kind::KdeIdle);
    }

    static void bindKde(wl_client *client, void *data, std::uint32_t version, std::uint32_t id)
    {
        static const struct org_kde_kwin_idle_interface requests{getKdeTimeout};
        wl_resource *resource = wl_resource_create(client, &org_kde_kwin_idle_interface, int(version), id);
        wl_resource_set_implementation(resource, &requests, data, nullptr);
    }
};

FakeCompositor::FakeCompositor()
    : m_display(wl_display_create())
{
}

FakeCompositor::~FakeCompositor()
{
    die();
    wl_display_destroy(m_display);
}

namespace {

/// Counts the registries of one client and lives as long as the client.
struct RegistryCount
{
    wl_listener created;
    wl_listener destroyed;
    int *registries;
};

void countRegistry(wl_listener *listener, void *resource)
{
    // The listener is the structure's first member.
    if (std::strcmp(wl_resource_get_class(static_cast<wl_resource *>(resource)), "wl_registry") == 0)
        ++*reinterpret_cast<RegistryCount *>(listener)->registries;
}

void destroyCount(wl_listener *listener, void *)
{
    char *destroyed = reinterpret_cast<char *>(listener);
    auto *count = reinterpret_cast<RegistryCount *>(destroyed - offsetof(RegistryCount, destroyed));
    wl_list_remove(&count->created.link);
    delete count;
}

} // namespace

int FakeCompositor::connectClient()
{
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        std::abort();
    wl_client *client = wl_client_create(m_display, ends[0]);
    auto *count = new RegistryCount{{{}, countRegistry}, {{}, destroyCount}, &m_registries};
    wl_client_add_resource_created_listener(client, &count->created);
    wl_client_add_destroy_listener(client, &count->destroyed);
    return ends[1];
}

std::string FakeCompositor::listen()
{
    const char *name = wl_display_add_socket_auto(m_display);
    return name ? name : "";
}

wl_global *FakeCompositor::offerSeat(int version)
{
    return wl_global_create(m_display, &wl_seat_interface, version, this, Requests::bindSeat);
}

wl_global *FakeCompositor::offerExtIdleNotify(int version)
{
    return wl_global_create(m_display, &ext_idle_notifier_v1_interface, version, this, Requests::bindExt);
}

wl_global *FakeCompositor::offerKdeIdle()
{
    return wl_global_create(m_display, &org_kde_kwin_idle_interface, 1, this, Requests::bindKde);
}

void FakeCompositor::withdraw(wl_global *global)
{
    wl_global_destroy(global);
}

void FakeCompositor::withdrawWhenTold(wl_global *global, const wl_global *later)
{
    m_withdrawn = global;
    m_later = later;
    wl_display_set_global_filter(
        m_display,
        [](const wl_client *, const wl_global *told, void *data) {
            auto &self = *static_cast<FakeCompositor *>(data);
            if (told == self.m_later && self.m_withdrawn)
                wl_global_remove(std::exchange(self.m_withdrawn, nullptr));
            return true;
        },
        this);
}

void FakeCompositor::pump()
{
    wl_event_loop_dispatch(wl_display_get_event_loop(m_display), 0);
    wl_display_flush_clients(m_display);
}

void FakeCompositor::sendIdled(bool isInhibited)
{
    for (const Notification &each : m_notifications) {
        if (isInhibited && each.kind != Kind::ExtInputIdle)
            continue;
        if (each.kind != Kind::KdeIdle)
            ext_idle_notification_v1_send_idled(each.resource);
        else
            org_kde_kwin_idle_timeout_send_idle(each.resource);
    }
    wl_display_flush_clients(m_display);
}

void FakeCompositor::sendResumed()
{
    for (const Notification &each : m_notifications) {
        if (each.kind != Kind::KdeIdle)
            ext_idle_notification_v1_send_resumed(each.resource);
        else
            org_kde_kwin_idle_timeout_send_resumed(each.resource);
    }
    wl_display_flush_clients(m_display);
}

void FakeCompositor::die()
{
    wl_display_destroy_clients(m_display);
}

bool FakeCompositor::hasClient() const
{
    return wl_list_empty(wl_display_get_client_list(m_display)) == 0;
}
