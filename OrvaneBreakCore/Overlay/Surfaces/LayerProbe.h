// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LayerShell.h"

#include <memory>

/// Finds out whether the compositor draws layer surfaces. It does not while a lock screen of
/// ext-session-lock-v1 is up, and tells nobody else of it. Where the compositor does not offer that protocol,
/// nothing is probed. User-interface thread only.
class LayerProbe
{
public:
    /// `display` and `shell` outlive the probe.
    LayerProbe(wl_display &display, const LayerShell &shell);
    LayerProbe(const LayerProbe &) = delete;
    LayerProbe &operator=(const LayerProbe &) = delete;

    /// Shows an invisible surface of one pixel on `output`, which takes neither clicks nor keys, until it has
    /// been drawn, and waits for that for a second at most. If it was not drawn in time, later calls never
    /// wait, and return false until it is or its output goes. True where nothing can be found out.
    [[nodiscard]] bool isDrawn(wl_output &output);

private:
    /// On its way to the screen. The role goes before the surface, as the protocol demands.
    struct Pixel
    {
        NativePointer<wl_surface> surface;
        std::unique_ptr<LayerSurface> layer;
        NativePointer<wl_callback> frame;
        bool isDrawn = false;
    };

    [[nodiscard]] std::unique_ptr<Pixel> showPixel(wl_output &output, WaylandQueue::Deadline deadline) const;

    const LayerShell &m_shell;
    WaylandQueue m_queue;
    NativePointer<wl_compositor> m_compositor;
    NativePointer<wl_buffer> m_buffer;
    std::unique_ptr<Pixel> m_pixel;
};
