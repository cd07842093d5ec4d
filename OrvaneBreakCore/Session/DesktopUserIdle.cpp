// SPDX-License-Identifier: GPL-3.0-or-later
#include "DesktopUserIdle.h"

#include <QtGlobal>

#include <wayland-client-core.h>

namespace {

/// Without a name the library would try the usual one, which may belong to another session of the same user.
WaylandDisplayPointer connectToCompositor()
{
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return nullptr;
    return WaylandDisplayPointer(wl_display_connect(nullptr));
}

} // namespace

UserIdleSource chooseUserIdleSource(const DesktopIdleFacts &facts)
{
    if (facts.isWaylandSession && facts.offersExtIdleNotify)
        return UserIdleSource::ExtIdleNotify;
    if (facts.isWaylandSession && facts.offersKdeIdle)
        return UserIdleSource::KdeIdle;
    if (!facts.isWaylandSession && facts.offersXScreenSaver)
        return UserIdleSource::XScreenSaver;
    if (facts.ownsMutterIdleMonitor)
        return UserIdleSource::MutterIdleMonitor;
    return facts.ownsMuffinIdleMonitor ? UserIdleSource::MuffinIdleMonitor : UserIdleSource::None;
}

const char *userIdleSourceName(UserIdleSource source)
{
    switch (source) {
    case UserIdleSource::None:
        break;
    case UserIdleSource::XScreenSaver:
        return "XScreenSaver extension";
    case UserIdleSource::ExtIdleNotify:
        return "ext-idle-notify-v1";
    case UserIdleSource::KdeIdle:
        return "org_kde_kwin_idle";
    case UserIdleSource::MutterIdleMonitor:
        return MutterUserIdle::mutter.data();
    case UserIdleSource::MuffinIdleMonitor:
        return MutterUserIdle::muffin.data();
    }
    return "none";
}

DesktopUserIdle::DesktopUserIdle(const RunLoop &runLoop, std::chrono::milliseconds timeout)
    : m_wayland(runLoop, connectToCompositor(), timeout)
    , m_timeout(timeout)
    , m_mutter(QDBusConnection::sessionBus(), MutterUserIdle::mutter)
    , m_muffin(QDBusConnection::sessionBus(), MutterUserIdle::muffin)
{
    if (m_wayland.hasCompositor())
        m_wayland.waitForAnnouncements();
    else
        m_x11.emplace();
}

UserIdleSource DesktopUserIdle::source() const
{
    const std::optional<WaylandIdleProtocol> protocol = m_wayland.protocol();
    DesktopIdleFacts facts;
    facts.isWaylandSession = m_wayland.hasCompositor();
    facts.offersExtIdleNotify = protocol == WaylandIdleProtocol::ExtIdleNotify;
    facts.offersKdeIdle = protocol == WaylandIdleProtocol::KdeIdle;
    facts.offersXScreenSaver = m_x11 && m_x11->isOffered();
    if (!protocol && !facts.offersXScreenSaver) {
        facts.ownsMutterIdleMonitor = m_mutter.isOffered();
        facts.ownsMuffinIdleMonitor = !facts.ownsMutterIdleMonitor && m_muffin.isOffered();
    }
    return chooseUserIdleSource(facts);
}

InputIdleSeconds DesktopUserIdle::secondsSinceLastInput() const
{
    switch (source()) {
    case UserIdleSource::None:
        break;
    case UserIdleSource::XScreenSaver:
        return m_x11->secondsSinceLastInput();
    case UserIdleSource::ExtIdleNotify:
    case UserIdleSource::KdeIdle:
        return m_wayland.secondsSinceLastInput();
    case UserIdleSource::MutterIdleMonitor:
        return m_mutter.secondsSinceLastInput();
    case UserIdleSource::MuffinIdleMonitor:
        return m_muffin.secondsSinceLastInput();
    }
    return {};
}

std::chrono::milliseconds DesktopUserIdle::resolution() const
{
    return m_wayland.protocol() ? m_timeout : std::chrono::milliseconds(0);
}
