// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandUserIdle.h"

#include <wayland-client.h>

#include <algorithm>
#include <string_view>
#include <utility>

WaylandUserIdle::WaylandUserIdle(const RunLoop &runLoop, WaylandDisplayPointer display,
                                 WaylandIdleProtocol protocol, std::chrono::milliseconds timeout)
    : m_runLoop(runLoop)
    , m_protocol(protocol)
    , m_timeout(timeout)
    , m_connection(std::move(display), [this] { m_idleSince.reset(); })
{
    if (m_connection.display())
        listenToRegistry();
}

WaylandUserIdle::~WaylandUserIdle() = default;

InputIdleSeconds WaylandUserIdle::secondsSinceLastInput() const
{
    InputIdleSeconds seconds{};
    if (m_idleSince) {
        const std::chrono::duration<double> idle = m_runLoop.now() - *m_idleSince;
        // Negative after the clock was set back.
        seconds.fill(std::max(0.0, idle.count()));
    }
    return seconds;
}

void WaylandUserIdle::listenToRegistry()
{
    static constexpr wl_registry_listener listener{
        [](void *self, wl_registry *, std::uint32_t name, const char *interface, std::uint32_t version) {
            static_cast<WaylandUserIdle *>(self)->globalAppeared({name, version}, interface);
        },
        [](void *self, wl_registry *, std::uint32_t name) {
            static_cast<WaylandUserIdle *>(self)->globalVanished(name);
        },
    };
    m_registry.reset(wl_display_get_registry(m_connection.display()));
    wl_registry_add_listener(m_registry.get(), &listener, this);
    m_connection.flush();
}

void WaylandUserIdle::globalAppeared(WaylandGlobal global, const char *interface)
{
    const std::string_view name(interface);
    if (name == wl_seat_interface.name)
        m_seats.push_back(global);
    else if (name == globalInterface(m_protocol))
        m_notifiers.push_back(global);
    startWatch();
}

void WaylandUserIdle::globalVanished(std::uint32_t name)
{
    const auto hasName = [name](const WaylandGlobal &global) { return global.name == name; };
    std::erase_if(m_seats, hasName);
    std::erase_if(m_notifiers, hasName);
    if (!m_watch || (m_watch->seatName != name && m_watch->notifierName != name))
        return;
    m_watch.reset();
    m_idleSince.reset();
    startWatch();
}

void WaylandUserIdle::startWatch()
{
    if (m_watch || m_seats.empty() || m_notifiers.empty())
        return;
    const WaylandGlobal &seat = m_seats.front();
    const WaylandGlobal &notifier = m_notifiers.front();
    const std::uint32_t version = std::min<std::uint32_t>(seat.version, WL_SEAT_RELEASE_SINCE_VERSION);
    NativePointer<wl_seat> bound(
        static_cast<wl_seat *>(wl_registry_bind(m_registry.get(), seat.name, &wl_seat_interface, version)));
    auto notification = requestIdleNotification(
        m_protocol, *m_registry, notifier, *bound, m_timeout,
        {[this] { m_idleSince = m_runLoop.now() - m_timeout; }, [this] { m_idleSince.reset(); }});
    m_watch = Watch{seat.name, notifier.name, std::move(bound), std::move(notification)};
}
