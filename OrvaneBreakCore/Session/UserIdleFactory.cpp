// SPDX-License-Identifier: GPL-3.0-or-later
#include "UserIdleFactory.h"

#include "MutterUserIdle.h"
#include "WaylandUserIdle.h"
#include "X11UserIdle.h"

#include <QtGlobal>

#include <wayland-client-core.h>

#include <utility>

namespace {

/// Without a name the library would try the usual one, which may belong to another session of the same user.
WaylandDisplayPointer connectToCompositor()
{
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return nullptr;
    return WaylandDisplayPointer(wl_display_connect(nullptr));
}

/// The connections that the search opened. The chosen source takes its own over.
struct Connections
{
    WaylandDisplayPointer display;
    std::unique_ptr<X11UserIdle> x11;
    QDBusConnection bus;
};

std::unique_ptr<UserIdle> makeFrom(UserIdleSource source, const RunLoop &runLoop, Connections connections)
{
    switch (source) {
    case UserIdleSource::None:
        break;
    case UserIdleSource::XScreenSaver:
        return std::move(connections.x11);
    case UserIdleSource::ExtIdleNotify:
        return std::make_unique<WaylandUserIdle>(runLoop, std::move(connections.display),
                                                 WaylandIdleProtocol::ExtIdleNotify);
    case UserIdleSource::KdeIdle:
        return std::make_unique<WaylandUserIdle>(runLoop, std::move(connections.display),
                                                 WaylandIdleProtocol::KdeIdle);
    case UserIdleSource::MutterIdleMonitor:
        return std::make_unique<MutterUserIdle>(connections.bus);
    }
    return std::make_unique<AbsentUserIdle>();
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
    return facts.ownsMutterIdleMonitor ? UserIdleSource::MutterIdleMonitor : UserIdleSource::None;
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
        return "org.gnome.Mutter.IdleMonitor";
    }
    return "none";
}

std::chrono::seconds ChosenUserIdle::resolution() const
{
    const bool isWayland = source == UserIdleSource::ExtIdleNotify || source == UserIdleSource::KdeIdle;
    return isWayland ? WaylandUserIdle::usualTimeout : std::chrono::seconds(0);
}

ChosenUserIdle makeUserIdle(const RunLoop &runLoop)
{
    DesktopIdleFacts facts;
    Connections connections{connectToCompositor(), nullptr, QDBusConnection::sessionBus()};
    if (connections.display) {
        const OfferedWaylandIdle offered = offeredWaylandIdle(*connections.display);
        facts.isWaylandSession = true;
        facts.offersExtIdleNotify = offered.extIdleNotify;
        facts.offersKdeIdle = offered.kdeIdle;
    } else {
        connections.x11 = std::make_unique<X11UserIdle>();
        facts.offersXScreenSaver = connections.x11->isOffered();
    }
    facts.ownsMutterIdleMonitor = MutterUserIdle::isOffered(connections.bus);
    const UserIdleSource source = chooseUserIdleSource(facts);
    return {makeFrom(source, runLoop, std::move(connections)), source};
}
