// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandKeyboard.h"

#include <unistd.h>
#include <wayland-client.h>

#include <cstdint>
#include <utility>

WaylandKeyboard::WaylandKeyboard(wl_seat &seat, std::function<void()> moved)
    : m_keyboard(wl_seat_get_keyboard(&seat))
    , m_moved(std::move(moved))
{
    static constexpr wl_keyboard_listener listener{
        [](void *, wl_keyboard *, std::uint32_t, std::int32_t file, std::uint32_t) { close(file); },
        [](void *self, wl_keyboard *, std::uint32_t, wl_surface *surface, wl_array *) {
            static_cast<WaylandKeyboard *>(self)->moveTo(surface);
        },
        [](void *self, wl_keyboard *, std::uint32_t, wl_surface *) {
            static_cast<WaylandKeyboard *>(self)->moveTo(nullptr);
        },
        [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
        [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {
        },
        [](void *, wl_keyboard *, std::int32_t, std::int32_t) {},
    };
    wl_keyboard_add_listener(m_keyboard.get(), &listener, this);
}

void WaylandKeyboard::moveTo(wl_surface *focus)
{
    m_focus = focus;
    m_moved();
}
