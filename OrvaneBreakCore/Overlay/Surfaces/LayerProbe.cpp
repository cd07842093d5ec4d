// SPDX-License-Identifier: GPL-3.0-or-later
#include "LayerProbe.h"

#include "WaylandGlobals.h"

#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>

#include <chrono>
#include <optional>

using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds longestFrame = 1s;

/// One transparent pixel, or nullptr without memory or descriptors.
NativePointer<wl_buffer> transparentPixel(wl_shm &memory)
{
    constexpr int bytes = 4;
    const int file = memfd_create("orvanebreak", MFD_CLOEXEC);
    if (file < 0)
        return nullptr;
    NativePointer<wl_buffer> buffer;
    if (ftruncate(file, bytes) == 0) {
        wl_shm_pool *pool = wl_shm_create_pool(&memory, file, bytes);
        buffer.reset(wl_shm_pool_create_buffer(pool, 0, 1, 1, bytes, WL_SHM_FORMAT_ARGB8888));
        wl_shm_pool_destroy(pool);
    }
    close(file);
    return buffer;
}

} // namespace

LayerProbe::LayerProbe(wl_display &display, const LayerShell &shell)
    : m_shell(shell)
    , m_queue(display)
{
    const std::optional<WaylandGlobals> globals = WaylandGlobals::ask(m_queue);
    if (!globals || !globals->offers("ext_session_lock_manager_v1"))
        return;
    m_compositor.reset(static_cast<wl_compositor *>(globals->bind(wl_compositor_interface, 1)));
    const NativePointer<wl_shm> memory(static_cast<wl_shm *>(globals->bind(wl_shm_interface, 1)));
    if (memory)
        m_buffer = transparentPixel(*memory);
}

bool LayerProbe::isDrawn(wl_output &output)
{
    const auto isSettled = [this] { return m_pixel->isDrawn || m_pixel->layer->isClosed(); };
    if (m_pixel) {
        m_queue.dispatchPending();
    } else {
        const WaylandQueue::Deadline deadline = std::chrono::steady_clock::now() + longestFrame;
        m_pixel = showPixel(output, deadline);
        if (!m_pixel)
            return true;
        static_cast<void>(m_queue.waitUntil(isSettled, deadline));
    }
    if (!isSettled())
        return false;
    m_pixel.reset();
    return true;
}

std::unique_ptr<LayerProbe::Pixel> LayerProbe::showPixel(wl_output &output,
                                                         WaylandQueue::Deadline deadline) const
{
    if (!m_compositor || !m_buffer)
        return nullptr;
    auto pixel = std::make_unique<Pixel>();
    pixel->surface.reset(wl_compositor_create_surface(m_compositor.get()));
    wl_region *nothing = wl_compositor_create_region(m_compositor.get());
    wl_surface_set_input_region(pixel->surface.get(), nothing);
    wl_region_destroy(nothing);
    pixel->layer = m_shell.putInCorner(*pixel->surface, output, deadline);
    if (!pixel->layer)
        return nullptr;
    static constexpr wl_callback_listener listener{
        [](void *isDrawn, wl_callback *, std::uint32_t) { *static_cast<bool *>(isDrawn) = true; }};
    pixel->frame.reset(wl_surface_frame(pixel->surface.get()));
    wl_callback_add_listener(pixel->frame.get(), &listener, &pixel->isDrawn);
    wl_surface_attach(pixel->surface.get(), m_buffer.get(), 0, 0);
    wl_surface_damage(pixel->surface.get(), 0, 0, 1, 1);
    wl_surface_commit(pixel->surface.get());
    return pixel;
}
