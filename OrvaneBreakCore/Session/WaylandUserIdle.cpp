// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandUserIdle.h"

#include "WaylandGlobals.h"

#include <wayland-client.h>

#include <algorithm>
#include <string_view>
#include <utility>

WaylandUserIdle::WaylandUserIdle(const RunLoop &runLoop, WaylandDisplayPointer display,
                                 std::chrono::milliseconds timeout)
    : m_runLoop(runLoop)
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

void WaylandUserIdle::waitForAnnouncements()
{
    if (!hasCompositor())
        return;
    const WaylandQueue queue(*m_connection.display());
    if (queue.roundTrip(std::chrono::steady_clock::now() + WaylandGlobals::defaultTimeout))
        wl_display_dispatch_pending(m_connection.display());
    m_connection.flush();
}

std::optional<WaylandIdleProtocol> WaylandUserIdle::protocol() const
{
    const Notifier *notifier = bestNotifier();
    return notifier ? std::optional(notifier->protocol) : std::nullopt;
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
    if (std::string_view(interface) == wl_seat_interface.name)
        m_seats.push_back(global);
    else if (const auto offered = idleProtocolOf(interface))
        m_notifiers.push_back({*offered, global});
    else
        return;
    startWatch();
}

void WaylandUserIdle::globalVanished(std::uint32_t name)
{
    std::erase_if(m_seats, [name](const WaylandGlobal &seat) { return seat.name == name; });
    std::erase_if(m_notifiers, [name](const Notifier &notifier) { return notifier.global.name == name; });
    if (!m_watch || (m_watch->seatName != name && m_watch->notifierName != name))
        return;
    m_watch.reset();
    m_idleSince.reset();
    startWatch();
}

const WaylandUserIdle::Notifier *WaylandUserIdle::bestNotifier() const
{
    // The first enumerator is the best protocol.
    const auto best = std::min_element(m_notifiers.begin(), m_notifiers.end(),
                                       [](const auto &a, const auto &b) { return a.protocol < b.protocol; });
    return best == m_notifiers.end() ? nullptr : &*best;
}

void WaylandUserIdle::startWatch()
{
    const Notifier *notifier = bestNotifier();
    if (m_seats.empty() || !notifier || (m_watch && m_watch->notifierName == notifier->global.name))
        return;
    m_watch.reset();
    m_idleSince.reset();
    const WaylandGlobal &seat = m_seats.front();
    const std::uint32_t version = std::min<std::uint32_t>(seat.version, WL_SEAT_RELEASE_SINCE_VERSION);
    NativePointer<wl_seat> bound(
        static_cast<wl_seat *>(wl_registry_bind(m_registry.get(), seat.name, &wl_seat_interface, version)));
    auto notification = requestIdleNotification(
        notifier->protocol, *m_registry, notifier->global, *bound, m_timeout,
        {[this] { m_idleSince = m_runLoop.now() - m_timeout; }, [this] { m_idleSince.reset(); }});
    m_watch = Watch{seat.name, notifier->global.name, std::move(bound), std::move(notification)};
}
