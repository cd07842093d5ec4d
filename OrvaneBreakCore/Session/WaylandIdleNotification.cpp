// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandIdleNotification.h"

#include <ext-idle-notify-v1-client-protocol.h>
#include <idle-client-protocol.h>
#include <wayland-client.h>

#include <algorithm>
#include <utility>

namespace {

template <typename Object, void (*destroy)(Object *)>
struct ProxyDeleter
{
    void operator()(Object *object) const { destroy(object); }
};
template <typename Object, void (*destroy)(Object *)>
using ProxyPointer = std::unique_ptr<Object, ProxyDeleter<Object, destroy>>;

template <typename Object>
Object *bind(wl_registry &registry, WaylandGlobal global, const wl_interface &interface,
             std::uint32_t newestVersion)
{
    return static_cast<Object *>(
        wl_registry_bind(&registry, global.name, &interface, std::min(global.version, newestVersion)));
}

/// Version 2 can ignore idle inhibitors, such as a video player's.
ext_idle_notification_v1 *request(ext_idle_notifier_v1 *notifier, std::chrono::milliseconds timeout,
                                  wl_seat &seat)
{
    const auto milliseconds = static_cast<std::uint32_t>(timeout.count());
    if (ext_idle_notifier_v1_get_version(notifier) >=
        EXT_IDLE_NOTIFIER_V1_GET_INPUT_IDLE_NOTIFICATION_SINCE_VERSION)
        return ext_idle_notifier_v1_get_input_idle_notification(notifier, milliseconds, &seat);
    return ext_idle_notifier_v1_get_idle_notification(notifier, milliseconds, &seat);
}

class ExtIdleNotification final : public WaylandIdleNotification
{
public:
    ExtIdleNotification(wl_registry &registry, WaylandGlobal global, wl_seat &seat,
                        std::chrono::milliseconds timeout, Handlers handlers)
        : m_handlers(std::move(handlers))
        , m_notifier(bind<ext_idle_notifier_v1>(registry, global, ext_idle_notifier_v1_interface, 2))
        , m_notification(request(m_notifier.get(), timeout, seat))
    {
        static constexpr ext_idle_notification_v1_listener listener{
            [](void *self, auto *) { static_cast<ExtIdleNotification *>(self)->m_handlers.idled(); },
            [](void *self, auto *) { static_cast<ExtIdleNotification *>(self)->m_handlers.resumed(); },
        };
        ext_idle_notification_v1_add_listener(m_notification.get(), &listener, this);
    }

private:
    Handlers m_handlers;
    ProxyPointer<ext_idle_notifier_v1, ext_idle_notifier_v1_destroy> m_notifier;
    ProxyPointer<ext_idle_notification_v1, ext_idle_notification_v1_destroy> m_notification;
};

class KdeIdleNotification final : public WaylandIdleNotification
{
public:
    KdeIdleNotification(wl_registry &registry, WaylandGlobal global, wl_seat &seat,
                        std::chrono::milliseconds timeout, Handlers handlers)
        : m_handlers(std::move(handlers))
        , m_idle(bind<org_kde_kwin_idle>(registry, global, org_kde_kwin_idle_interface, 1))
        , m_timeout(org_kde_kwin_idle_get_idle_timeout(m_idle.get(), &seat,
                                                       static_cast<std::uint32_t>(timeout.count())))
    {
        static constexpr org_kde_kwin_idle_timeout_listener listener{
            [](void *self, auto *) { static_cast<KdeIdleNotification *>(self)->m_handlers.idled(); },
            [](void *self, auto *) { static_cast<KdeIdleNotification *>(self)->m_handlers.resumed(); },
        };
        org_kde_kwin_idle_timeout_add_listener(m_timeout.get(), &listener, this);
    }

private:
    Handlers m_handlers;
    ProxyPointer<org_kde_kwin_idle, org_kde_kwin_idle_destroy> m_idle;
    ProxyPointer<org_kde_kwin_idle_timeout, org_kde_kwin_idle_timeout_release> m_timeout;
};

} // namespace

std::optional<WaylandIdleProtocol> idleProtocolOf(std::string_view interface)
{
    if (interface == ext_idle_notifier_v1_interface.name)
        return WaylandIdleProtocol::ExtIdleNotify;
    if (interface == org_kde_kwin_idle_interface.name)
        return WaylandIdleProtocol::KdeIdle;
    return std::nullopt;
}

std::unique_ptr<WaylandIdleNotification> requestIdleNotification(WaylandIdleProtocol protocol,
                                                                 wl_registry &registry, WaylandGlobal global,
                                                                 wl_seat &seat,
                                                                 std::chrono::milliseconds timeout,
                                                                 WaylandIdleNotification::Handlers handlers)
{
    if (protocol == WaylandIdleProtocol::ExtIdleNotify)
        return std::make_unique<ExtIdleNotification>(registry, global, seat, timeout, std::move(handlers));
    return std::make_unique<KdeIdleNotification>(registry, global, seat, timeout, std::move(handlers));
}
