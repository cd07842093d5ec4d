// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandQueue.h"

#include <poll.h>
#include <wayland-client.h>

#include <algorithm>
#include <cerrno>

namespace {

/// Waits until there is something to read or the deadline has passed; a signal ends the wait early.
bool isReadable(int descriptor, WaylandQueue::Deadline deadline)
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd request{descriptor, POLLIN, 0};
    return poll(&request, 1, static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0))) > 0;
}

} // namespace

void WaylandQueue::WrapperDeleter::operator()(wl_display *wrapper) const
{
    wl_proxy_wrapper_destroy(wrapper);
}

WaylandQueue::WaylandQueue(wl_display &display)
    : m_display(display)
    , m_queue(wl_display_create_queue(&display))
    , m_wrapper(static_cast<wl_display *>(wl_proxy_create_wrapper(&display)))
{
    wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(m_wrapper.get()), m_queue.get());
}

NativePointer<wl_registry> WaylandQueue::createRegistry() const
{
    return NativePointer<wl_registry>(wl_display_get_registry(m_wrapper.get()));
}

bool WaylandQueue::waitUntil(const std::function<bool()> &isDone, Deadline deadline) const
{
    while (!isDone()) {
        if (std::chrono::steady_clock::now() >= deadline || !readEvents(deadline))
            return false;
    }
    return true;
}

bool WaylandQueue::roundTrip(Deadline deadline) const
{
    static constexpr wl_callback_listener listener{
        [](void *isAnswered, wl_callback *, std::uint32_t) { *static_cast<bool *>(isAnswered) = true; }};
    bool isAnswered = false;
    const NativePointer<wl_callback> callback(wl_display_sync(m_wrapper.get()));
    wl_callback_add_listener(callback.get(), &listener, &isAnswered);
    return waitUntil([&] { return isAnswered; }, deadline);
}

void WaylandQueue::dispatchPending() const
{
    wl_display_dispatch_queue_pending(&m_display, m_queue.get());
}

/// False on a broken connection.
bool WaylandQueue::readEvents(Deadline deadline) const
{
    if (wl_display_prepare_read_queue(&m_display, m_queue.get()) != 0)
        return wl_display_dispatch_queue_pending(&m_display, m_queue.get()) >= 0;
    // A full socket drains while the compositor reads.
    if (wl_display_flush(&m_display) < 0 && errno != EAGAIN) {
        wl_display_cancel_read(&m_display);
        return false;
    }
    if (!isReadable(wl_display_get_fd(&m_display), deadline)) {
        wl_display_cancel_read(&m_display);
        return true;
    }
    return wl_display_read_events(&m_display) >= 0 &&
           wl_display_dispatch_queue_pending(&m_display, m_queue.get()) >= 0;
}
