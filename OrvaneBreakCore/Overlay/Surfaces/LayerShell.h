// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "WaylandQueue.h"

#include <QSize>

#include <cstdint>
#include <functional>
#include <memory>

struct wl_display;
struct wl_output;
struct wl_surface;
struct zwlr_layer_shell_v1;
struct zwlr_layer_surface_v1;

/// A surface that covers an output, above everything and with the keyboard. Destroying it hides the surface,
/// which outlives it.
class LayerSurface
{
public:
    /// Called from the handling of the connection's own event queue, never before `LayerShell::cover()` has
    /// returned.
    struct Handlers
    {
        std::function<void(QSize)> resized; ///< The size in the compositor's logical pixels.
        std::function<void()> closed;       ///< The output is gone; called once, may destroy the surface.
    };

    LayerSurface(zwlr_layer_surface_v1 *layer, wl_surface &surface);
    LayerSurface(const LayerSurface &) = delete;
    LayerSurface &operator=(const LayerSurface &) = delete;

    void setHandlers(Handlers handlers) { m_handlers = std::move(handlers); }

    [[nodiscard]] bool isConfigured() const { return m_isConfigured; }
    [[nodiscard]] bool isClosed() const { return m_isClosed; }

    /// As the compositor last gave it, in its logical pixels; empty when it leaves that to the program.
    [[nodiscard]] QSize size() const { return m_size; }

    /// Has the following events handled with the connection's own queue instead of `queue`.
    void leave(const WaylandQueue &queue);

private:
    struct LayerDeleter
    {
        void operator()(zwlr_layer_surface_v1 *layer) const;
    };

    void configure(std::uint32_t serial, QSize size);
    void close();

    std::unique_ptr<zwlr_layer_surface_v1, LayerDeleter> m_layer;
    wl_surface &m_surface;
    Handlers m_handlers;
    QSize m_size;
    bool m_isConfigured = false;
    bool m_isClosed = false;
};

/// The compositor's layer shell. User-interface thread only.
class LayerShell
{
public:
    /// The shell of the compositor behind `display`, which outlives it, or nullptr where it offers none or
    /// does not answer within a second.
    [[nodiscard]] static std::unique_ptr<LayerShell> find(wl_display &display);

    LayerShell(const LayerShell &) = delete;
    LayerShell &operator=(const LayerShell &) = delete;

    /// Has `surface`, which has neither a role nor a buffer, cover `output`. Waits until the compositor has
    /// given the size, so that the surface may be drawn at once; nullptr when it has not at the deadline, the
    /// output is gone or the connection is broken.
    [[nodiscard]] std::unique_ptr<LayerSurface> cover(wl_surface &surface, wl_output &output,
                                                      WaylandQueue::Deadline deadline) const;

private:
    struct ShellDeleter
    {
        void operator()(zwlr_layer_shell_v1 *shell) const;
    };

    explicit LayerShell(wl_display &display);

    WaylandQueue m_queue;
    std::unique_ptr<zwlr_layer_shell_v1, ShellDeleter> m_shell;
};
