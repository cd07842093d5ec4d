// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeLayerShell.h"

#include "FakeCompositor.h"

#include <wayland-server.h>
#include <wlr-layer-shell-unstable-v1-server-protocol.h>

#include <cstdlib>

/// The request handlers. The user data of each resource and global is the shell.
struct FakeLayerShell::Requests
{
    static FakeLayerShell &self(wl_resource *resource)
    {
        return *static_cast<FakeLayerShell *>(wl_resource_get_user_data(resource));
    }

    static Layer &layer(wl_resource *resource)
    {
        for (Layer &each : self(resource).m_layers) {
            if (each.resource == resource)
                return each;
        }
        std::abort();
    }

    static void destroy(wl_client *, wl_resource *resource) { wl_resource_destroy(resource); }

    static void commit(wl_client *, wl_resource *surface)
    {
        for (Layer &each : self(surface).m_layers) {
            if (each.surface != surface || !each.resource || ++each.commits > 1)
                continue;
            if (self(surface).m_answer == Answer::Configure)
                zwlr_layer_surface_v1_send_configure(each.resource, firstSerial, width, height);
            else if (self(surface).m_answer == Answer::Close)
                zwlr_layer_surface_v1_send_closed(each.resource);
        }
        if (self(surface).m_isDrawing)
            self(surface).setDrawing(true);
    }

    static void requestFrame(wl_client *client, wl_resource *surface, std::uint32_t id)
    {
        wl_resource *callback = wl_resource_create(client, &wl_callback_interface, 1, id);
        wl_resource_set_implementation(callback, nullptr, &self(surface),
                                       [](wl_resource *gone) { std::erase(self(gone).m_frames, gone); });
        self(surface).m_frames.push_back(callback);
    }

    static void createSurface(wl_client *client, wl_resource *compositor, std::uint32_t id)
    {
        static const auto requests = [] {
            struct wl_surface_interface result = {};
            result.destroy = destroy;
            result.commit = commit;
            result.frame = requestFrame;
            result.attach = [](wl_client *, wl_resource *, wl_resource *, std::int32_t, std::int32_t) {};
            result.damage = [](wl_client *, wl_resource *, std::int32_t, std::int32_t, std::int32_t,
                               std::int32_t) {};
            result.set_input_region = [](wl_client *, wl_resource *, wl_resource *) {};
            return result;
        }();
        wl_resource *surface = wl_resource_create(client, &wl_surface_interface, 1, id);
        wl_resource_set_implementation(surface, &requests, &self(compositor), nullptr);
    }

    static void getLayerSurface(wl_client *client, wl_resource *shell, std::uint32_t id, wl_resource *surface,
                                wl_resource *, std::uint32_t layerNumber, const char *)
    {
        static const auto requests = [] {
            struct zwlr_layer_surface_v1_interface result = {};
            result.set_anchor = [](wl_client *, wl_resource *resource, std::uint32_t anchor) {
                layer(resource).anchor = anchor;
            };
            result.set_size = [](wl_client *, wl_resource *, std::uint32_t, std::uint32_t) {};
            result.set_exclusive_zone = [](wl_client *, wl_resource *resource, std::int32_t zone) {
                layer(resource).exclusiveZone = zone;
            };
            result.set_keyboard_interactivity = [](wl_client *, wl_resource *resource,
                                                   std::uint32_t keyboard) {
                layer(resource).keyboards.push_back(keyboard);
            };
            result.ack_configure = [](wl_client *, wl_resource *resource, std::uint32_t serial) {
                layer(resource).acknowledged.push_back(serial);
            };
            result.destroy = destroy;
            return result;
        }();
        wl_resource *resource = wl_resource_create(client, &zwlr_layer_surface_v1_interface, 1, id);
        wl_resource_set_implementation(resource, &requests, &self(shell),
                                       [](wl_resource *gone) { layer(gone).resource = nullptr; });
        Layer added;
        added.resource = resource;
        added.surface = surface;
        added.layer = layerNumber;
        self(shell).m_layers.push_back(added);
    }

    static void bindCompositor(wl_client *client, void *data, std::uint32_t, std::uint32_t id)
    {
        // Later versions of the interface have more requests.
        static const struct wl_compositor_interface requests = [] {
            struct wl_compositor_interface first = {};
            first.create_surface = createSurface;
            first.create_region = [](wl_client *owner, wl_resource *, std::uint32_t region) {
                static const struct wl_region_interface regionRequests{destroy, nullptr, nullptr};
                wl_resource_set_implementation(wl_resource_create(owner, &wl_region_interface, 1, region),
                                               &regionRequests, nullptr, nullptr);
            };
            return first;
        }();
        wl_resource *resource = wl_resource_create(client, &wl_compositor_interface, 1, id);
        wl_resource_set_implementation(resource, &requests, data, nullptr);
    }

    static void bindOutput(wl_client *client, void *data, std::uint32_t, std::uint32_t id)
    {
        wl_resource *resource = wl_resource_create(client, &wl_output_interface, 1, id);
        wl_resource_set_implementation(resource, nullptr, data, nullptr);
    }

    static void bindShell(wl_client *client, void *data, std::uint32_t, std::uint32_t id)
    {
        static const struct zwlr_layer_shell_v1_interface requests{getLayerSurface};
        wl_resource *resource = wl_resource_create(client, &zwlr_layer_shell_v1_interface, 1, id);
        wl_resource_set_implementation(resource, &requests, data, nullptr);
    }
};

FakeLayerShell::FakeLayerShell(FakeCompositor &compositor, Answer answer)
    : m_compositor(compositor)
    , m_answer(answer)
{
}

void FakeLayerShell::offer(bool isShellOffered, bool isLockOffered)
{
    wl_display *display = m_compositor.display();
    wl_display_init_shm(display);
    wl_global_create(display, &wl_compositor_interface, 1, this, Requests::bindCompositor);
    wl_global_create(display, &wl_output_interface, 1, this, Requests::bindOutput);
    if (isShellOffered)
        wl_global_create(display, &zwlr_layer_shell_v1_interface, 1, this, Requests::bindShell);
    // Nobody binds it.
    static const wl_interface sessionLock{"ext_session_lock_manager_v1", 1, 0, nullptr, 0, nullptr};
    if (isLockOffered)
        wl_global_create(display, &sessionLock, 1, this,
                         [](wl_client *, void *, std::uint32_t, std::uint32_t) {});
}

void FakeLayerShell::setDrawing(bool isDrawing)
{
    m_isDrawing = isDrawing;
    while (isDrawing && !m_frames.empty()) {
        wl_callback_send_done(m_frames.back(), 0);
        wl_resource_destroy(m_frames.back());
    }
}

void FakeLayerShell::configure(std::uint32_t serial, std::uint32_t newWidth, std::uint32_t newHeight) const
{
    for (const Layer &each : m_layers) {
        if (each.resource)
            zwlr_layer_surface_v1_send_configure(each.resource, serial, newWidth, newHeight);
    }
}

void FakeLayerShell::close() const
{
    for (const Layer &each : m_layers) {
        if (each.resource)
            zwlr_layer_surface_v1_send_closed(each.resource);
    }
}
