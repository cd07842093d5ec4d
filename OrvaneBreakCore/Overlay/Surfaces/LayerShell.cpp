// SPDX-License-Identifier: GPL-3.0-or-later
#include "LayerShell.h"

#include "WaylandGlobals.h"

#include <wayland-client.h>
#include <wlr-layer-shell-unstable-v1-client-protocol.h>

#include <utility>

namespace {

constexpr std::uint32_t protocolVersion = 1;
constexpr std::uint32_t corner = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT;
constexpr std::uint32_t allEdges =
    corner | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
constexpr std::int32_t ignorePanels = -1;
constexpr std::uint32_t noKeyboard = 0;
constexpr std::uint32_t exclusiveKeyboard = 1;

} // namespace

void LayerSurface::LayerDeleter::operator()(zwlr_layer_surface_v1 *layer) const
{
    zwlr_layer_surface_v1_destroy(layer);
}

LayerSurface::LayerSurface(zwlr_layer_surface_v1 *layer, wl_surface &surface)
    : m_layer(layer)
    , m_surface(surface)
{
    static constexpr zwlr_layer_surface_v1_listener listener{
        [](void *self, zwlr_layer_surface_v1 *, std::uint32_t serial, std::uint32_t width,
           std::uint32_t height) {
            static_cast<LayerSurface *>(self)->configure(
                serial, QSize(static_cast<int>(width), static_cast<int>(height)));
        },
        [](void *self, zwlr_layer_surface_v1 *) { static_cast<LayerSurface *>(self)->close(); },
    };
    zwlr_layer_surface_v1_add_listener(layer, &listener, this);
    wl_surface_commit(&m_surface);
}

void LayerSurface::setKeyboardWanted(bool isWanted)
{
    zwlr_layer_surface_v1_set_keyboard_interactivity(m_layer.get(),
                                                     isWanted ? exclusiveKeyboard : noKeyboard);
    wl_surface_commit(&m_surface);
}

void LayerSurface::leave(const WaylandQueue &queue)
{
    wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(m_layer.get()), nullptr);
    // Events that were read before the change are still in the old queue.
    queue.dispatchPending();
}

void LayerSurface::configure(std::uint32_t serial, QSize size)
{
    zwlr_layer_surface_v1_ack_configure(m_layer.get(), serial);
    m_isConfigured = true;
    if (m_size == size)
        return;
    m_size = size;
    if (m_handlers.resized)
        m_handlers.resized(size);
}

void LayerSurface::close()
{
    if (m_isClosed)
        return;
    m_isClosed = true;
    // The handler may destroy this object, and with it the handler itself.
    const std::function<void()> closed = m_handlers.closed;
    if (closed)
        closed();
}

void LayerShell::ShellDeleter::operator()(zwlr_layer_shell_v1 *shell) const
{
    zwlr_layer_shell_v1_destroy(shell);
}

LayerShell::LayerShell(wl_display &display)
    : m_queue(display)
{
}

std::unique_ptr<LayerShell> LayerShell::find(wl_display &display)
{
    std::unique_ptr<LayerShell> result(new LayerShell(display));
    if (const auto globals = WaylandGlobals::ask(result->m_queue))
        result->m_shell.reset(static_cast<zwlr_layer_shell_v1 *>(
            globals->bind(zwlr_layer_shell_v1_interface, protocolVersion)));
    return result->m_shell ? std::move(result) : nullptr;
}

std::unique_ptr<LayerSurface> LayerShell::cover(wl_surface &surface, wl_output &output,
                                                WaylandQueue::Deadline deadline) const
{
    zwlr_layer_surface_v1 *layer = giveRole(surface, output);
    zwlr_layer_surface_v1_set_anchor(layer, allEdges);
    zwlr_layer_surface_v1_set_keyboard_interactivity(layer, exclusiveKeyboard);
    return configured(layer, surface, deadline);
}

std::unique_ptr<LayerSurface> LayerShell::putInCorner(wl_surface &surface, wl_output &output,
                                                      WaylandQueue::Deadline deadline) const
{
    zwlr_layer_surface_v1 *layer = giveRole(surface, output);
    zwlr_layer_surface_v1_set_anchor(layer, corner);
    zwlr_layer_surface_v1_set_size(layer, 1, 1);
    return configured(layer, surface, deadline);
}

zwlr_layer_surface_v1 *LayerShell::giveRole(wl_surface &surface, wl_output &output) const
{
    zwlr_layer_surface_v1 *layer = zwlr_layer_shell_v1_get_layer_surface(
        m_shell.get(), &surface, &output, ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "break");
    zwlr_layer_surface_v1_set_exclusive_zone(layer, ignorePanels);
    return layer;
}

std::unique_ptr<LayerSurface> LayerShell::configured(zwlr_layer_surface_v1 *layer, wl_surface &surface,
                                                     WaylandQueue::Deadline deadline) const
{
    auto result = std::make_unique<LayerSurface>(layer, surface);
    const auto hasAnswer = [&] { return result->isConfigured() || result->isClosed(); };
    if (!m_queue.waitUntil(hasAnswer, deadline) || result->isClosed())
        return nullptr;
    result->leave(m_queue);
    return result->isClosed() ? nullptr : std::move(result);
}
