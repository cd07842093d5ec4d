// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <memory>

struct wl_display;
struct wl_event_queue;
struct wl_registry;

/// An event queue of one's own on a connection to a compositor, so that its answers can be waited for with a
/// time limit, whoever else reads the connection. Any one thread; outlives what was created on it.
class WaylandQueue
{
public:
    using Deadline = std::chrono::steady_clock::time_point;

    /// `display` outlives the queue.
    explicit WaylandQueue(wl_display &display);

    /// A new registry whose events, and those of all that is bound from it, come through this queue. To be
    /// destroyed by the caller.
    [[nodiscard]] wl_registry *createRegistry() const;

    /// Sends what was requested and handles the events of this queue until `isDone`. False when it is not
    /// done at the deadline or the connection is broken.
    [[nodiscard]] bool waitUntil(const std::function<bool()> &isDone, Deadline deadline) const;

    /// Waits until the compositor has handled everything requested so far. False as above.
    [[nodiscard]] bool roundTrip(Deadline deadline) const;

    /// Handles what has been read already; never waits.
    void dispatchPending() const;

private:
    struct QueueDeleter
    {
        void operator()(wl_event_queue *queue) const;
    };
    struct WrapperDeleter
    {
        void operator()(wl_display *wrapper) const;
    };

    [[nodiscard]] bool readEvents(Deadline deadline) const;

    wl_display &m_display;
    std::unique_ptr<wl_event_queue, QueueDeleter> m_queue;
    std::unique_ptr<wl_display, WrapperDeleter> m_wrapper; ///< Makes objects on this queue.
};
