// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "NativePointers.h"

#include <chrono>
#include <functional>
#include <memory>

/// A separate event queue on a connection to a compositor: answers on it can be awaited with a timeout,
/// whoever else reads the connection. Used on any one thread; outlives the objects created on it.
class WaylandQueue
{
public:
    using Deadline = std::chrono::steady_clock::time_point;

    /// `display` outlives the queue.
    explicit WaylandQueue(wl_display &display);

    /// A new registry; its events, and those of all objects bound from it, come through this queue.
    [[nodiscard]] NativePointer<wl_registry> createRegistry() const;

    /// Sends the pending requests and handles the events of this queue until `isDone`. False if it is not
    /// done by the deadline or the connection is broken.
    [[nodiscard]] bool waitUntil(const std::function<bool()> &isDone, Deadline deadline) const;

    /// Waits until the compositor has handled all requests so far. False as above.
    [[nodiscard]] bool roundTrip(Deadline deadline) const;

    /// Handles the events that have already been read; never waits.
    void dispatchPending() const;

private:
    struct WrapperDeleter
    {
        void operator()(wl_display *wrapper) const;
    };

    [[nodiscard]] bool readEvents(Deadline deadline) const;

    wl_display &m_display;
    NativePointer<wl_event_queue> m_queue;
    std::unique_ptr<wl_display, WrapperDeleter> m_wrapper; ///< Creates objects on this queue.
};
