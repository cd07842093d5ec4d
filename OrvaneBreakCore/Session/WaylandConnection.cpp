// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandConnection.h"

#include <wayland-client-core.h>

#include <utility>

WaylandConnection::WaylandConnection(WaylandDisplayPointer display, std::function<void()> lost)
    : m_display(std::move(display))
    , m_lost(std::move(lost))
{
    if (!m_display)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(wl_display_get_fd(m_display.get()), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { readEvents(); });
}

void WaylandConnection::flush()
{
    // A broken connection is noticed when it is read, which also gets the compositor's last events.
    if (m_display)
        wl_display_flush(m_display.get());
}

void WaylandConnection::readEvents()
{
    while (wl_display_prepare_read(m_display.get()) != 0) {
        if (wl_display_dispatch_pending(m_display.get()) < 0)
            return lose();
    }
    if (wl_display_read_events(m_display.get()) < 0 || wl_display_dispatch_pending(m_display.get()) < 0)
        return lose();
    flush();
}

void WaylandConnection::lose()
{
    // The descriptor of a closed connection stays readable, so an enabled notifier would fire without end.
    m_notifier->setEnabled(false);
    m_lost();
}
