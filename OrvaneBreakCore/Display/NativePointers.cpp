// SPDX-License-Identifier: GPL-3.0-or-later
#include "NativePointers.h"

#include <wayland-client.h>
#include <xcb/xcb.h>

void NativeDeleter::operator()(wl_buffer *buffer) const
{
    wl_buffer_destroy(buffer);
}

void NativeDeleter::operator()(wl_callback *callback) const
{
    wl_callback_destroy(callback);
}

void NativeDeleter::operator()(wl_compositor *compositor) const
{
    wl_compositor_destroy(compositor);
}

void NativeDeleter::operator()(wl_display *display) const
{
    wl_display_disconnect(display);
}

void NativeDeleter::operator()(wl_event_queue *queue) const
{
    wl_event_queue_destroy(queue);
}

void NativeDeleter::operator()(wl_keyboard *keyboard) const
{
    if (wl_keyboard_get_version(keyboard) >= WL_KEYBOARD_RELEASE_SINCE_VERSION)
        wl_keyboard_release(keyboard);
    else
        wl_keyboard_destroy(keyboard);
}

void NativeDeleter::operator()(wl_registry *registry) const
{
    wl_registry_destroy(registry);
}

void NativeDeleter::operator()(wl_seat *seat) const
{
    // The compositor hears of the end only from version 5 on.
    if (wl_seat_get_version(seat) >= WL_SEAT_RELEASE_SINCE_VERSION)
        wl_seat_release(seat);
    else
        wl_seat_destroy(seat);
}

void NativeDeleter::operator()(wl_shm *memory) const
{
    wl_shm_destroy(memory);
}

void NativeDeleter::operator()(wl_surface *surface) const
{
    wl_surface_destroy(surface);
}

void NativeDeleter::operator()(xcb_connection_t *connection) const
{
    xcb_disconnect(connection);
}
