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

/// The layer role of a surface above everything. Destroying it hides the surface, which outlives it.
class LayerSurface
{
public:
    /// Called while the connection's default event queue is dispatched, never before `LayerShell::cover()`
    /// has returned.
    struct Handlers
    {
        std::function<void(QSize)> resized; ///< Gets the size in the compositor's logical pixels.
        std::function<void()> closed;       ///< The output is gone; called once, may destroy this object.
    };

    /// Takes over a role that has been given its place.
    LayerSurface(zwlr_layer_surface_v1 *layer, wl_surface &surface);
    LayerSurface(const LayerSurface &) = delete;
    LayerSurface &operator=(const LayerSurface &) = delete;

    void setHandlers(Handlers handlers) { m_handlers = std::move(handlers); }

    [[nodiscard]] bool isConfigured() const { return m_isConfigured; }
    [[nodiscard]] bool isClosed() const { return m_isClosed; }

    /// The last configured size in the compositor's logical pixels; empty if it leaves the size to the
    /// program.
    [[nodiscard]] QSize size() const { return m_size; }

    /// Whether this surface wants the keyboard, as one that covers an output does at first.
    void setKeyboardWanted(bool isWanted);

    /// Moves from `queue` to the connection's default queue, which delivers all later events.
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

/// The layer shell of the compositor. User-interface thread only.
class LayerShell
{
public:
    /// The shell of the compositor at `display`, which outlives it, or nullptr if there is none or the
    /// compositor does not answer within a second.
    [[nodiscard]] static std::unique_ptr<LayerShell> find(wl_display &display);

    LayerShell(const LayerShell &) = delete;
    LayerShell &operator=(const LayerShell &) = delete;

    /// Makes `surface`, which has neither a role nor a buffer, cover `output` with the keyboard. Waits until
    /// the compositor has configured the surface, so that it can be drawn at once. Nullptr if that takes
    /// longer than the deadline, the output is gone or the connection is broken.
    [[nodiscard]] std::unique_ptr<LayerSurface> cover(wl_surface &surface, wl_output &output,
                                                      WaylandQueue::Deadline deadline) const;

    /// Likewise for one pixel in a corner of the output, without the keyboard.
    [[nodiscard]] std::unique_ptr<LayerSurface> putInCorner(wl_surface &surface, wl_output &output,
                                                            WaylandQueue::Deadline deadline) const;

private:
    struct ShellDeleter
    {
        void operator()(zwlr_layer_shell_v1 *shell) const;
    };

    explicit LayerShell(wl_display &display);
    [[nodiscard]] zwlr_layer_surface_v1 *giveRole(wl_surface &surface, wl_output &output) const;
    [[nodiscard]] std::unique_ptr<LayerSurface> configured(zwlr_layer_surface_v1 *layer, wl_surface &surface,
                                                           WaylandQueue::Deadline deadline) const;

    WaylandQueue m_queue;
    std::unique_ptr<zwlr_layer_shell_v1, ShellDeleter> m_shell;
};
