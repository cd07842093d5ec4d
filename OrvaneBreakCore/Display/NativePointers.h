// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdlib>
#include <memory>

struct wl_buffer;
struct wl_callback;
struct wl_compositor;
struct wl_display;
struct wl_event_queue;
struct wl_keyboard;
struct wl_registry;
struct wl_seat;
struct wl_shm;
struct wl_surface;
struct xcb_connection_t;

/// Gives objects of the Wayland and X libraries back to them. A display or a connection is disconnected, and
/// a seat or a keyboard released where the compositor's version of it can be.
struct NativeDeleter
{
    void operator()(wl_buffer *buffer) const;
    void operator()(wl_callback *callback) const;
    void operator()(wl_compositor *compositor) const;
    void operator()(wl_display *display) const;
    void operator()(wl_event_queue *queue) const;
    void operator()(wl_keyboard *keyboard) const;
    void operator()(wl_registry *registry) const;
    void operator()(wl_seat *seat) const;
    void operator()(wl_shm *memory) const;
    void operator()(wl_surface *surface) const;
    void operator()(xcb_connection_t *connection) const;
};

template <typename Object>
using NativePointer = std::unique_ptr<Object, NativeDeleter>;

/// A connection to a compositor or an X server next to the toolkit's own.
using WaylandDisplayPointer = NativePointer<wl_display>;
using XcbConnectionPointer = NativePointer<xcb_connection_t>;

struct XcbReplyDeleter
{
    void operator()(void *reply) const { std::free(reply); }
};

/// A reply, an event or an error of the X server.
template <typename Reply>
using XcbReply = std::unique_ptr<Reply, XcbReplyDeleter>;
