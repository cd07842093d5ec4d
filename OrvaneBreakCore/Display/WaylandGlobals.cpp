// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandGlobals.h"

#include <wayland-client.h>

#include <algorithm>

WaylandGlobals::WaylandGlobals(const WaylandQueue &queue)
    : m_globals(std::make_unique<std::vector<Global>>())
    , m_registry(queue.createRegistry())
{
}

std::optional<WaylandGlobals> WaylandGlobals::ask(const WaylandQueue &queue,
                                                  std::chrono::milliseconds timeout)
{
    static constexpr wl_registry_listener listener{
        [](void *globals, wl_registry *, std::uint32_t name, const char *interface, std::uint32_t version) {
            static_cast<std::vector<Global> *>(globals)->push_back({name, interface, version});
        },
        [](void *globals, wl_registry *, std::uint32_t name) {
            std::erase_if(*static_cast<std::vector<Global> *>(globals),
                          [name](const Global &global) { return global.name == name; });
        },
    };
    WaylandGlobals result(queue);
    wl_registry_add_listener(result.m_registry.get(), &listener, result.m_globals.get());
    if (!queue.roundTrip(std::chrono::steady_clock::now() + timeout))
        return std::nullopt;
    return result;
}

void *WaylandGlobals::bind(const wl_interface &interface, std::uint32_t version) const
{
    const Global *global = find(interface.name);
    if (!global || global->version < version)
        return nullptr;
    return wl_registry_bind(m_registry.get(), global->name, &interface, version);
}

const WaylandGlobals::Global *WaylandGlobals::find(std::string_view interface) const
{
    const auto found = std::find_if(m_globals->begin(), m_globals->end(), [interface](const Global &global) {
        return global.interface == interface;
    });
    return found == m_globals->end() ? nullptr : &*found;
}
