// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FakeCompositor.h"

#include <QByteArray>
#include <QtGlobal>

#include <atomic>
#include <functional>
#include <thread>

/// A compositor on its own thread at WAYLAND_DISPLAY, for clients that wait for answers.
class RunningCompositor
{
public:
    /// `prepare` announces globals before any client can connect.
    explicit RunningCompositor(const std::function<void(FakeCompositor &)> &prepare)
    {
        prepare(m_compositor);
        qputenv("WAYLAND_DISPLAY", QByteArray::fromStdString(m_compositor.listen()));
        m_thread = std::thread([this] {
            while (!m_isStopping) {
                m_compositor.pump();
                std::this_thread::yield();
            }
        });
    }

    ~RunningCompositor()
    {
        stop();
        qunsetenv("WAYLAND_DISPLAY");
    }

    RunningCompositor(const RunningCompositor &) = delete;
    RunningCompositor &operator=(const RunningCompositor &) = delete;

    /// Ends the thread; then `compositor()` can be inspected.
    void stop()
    {
        m_isStopping = true;
        if (m_thread.joinable())
            m_thread.join();
    }

    /// Only after `stop()`.
    [[nodiscard]] FakeCompositor &compositor() { return m_compositor; }

private:
    FakeCompositor m_compositor;
    std::atomic<bool> m_isStopping = false;
    std::thread m_thread;
};
