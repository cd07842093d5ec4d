// SPDX-License-Identifier: GPL-3.0-or-later
#include "PlatformChoice.h"

#include "NativePointers.h"
#include "WaylandGlobals.h"

#include <QStringList>

#include <wayland-client-core.h>
#include <xcb/xcb.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr const char *platformVariable = "QT_QPA_PLATFORM";
constexpr const char *noSharedMemoryVariable = "QT_XCB_NO_MITSHM";
constexpr const char *roleVariable = "QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT";

const char *reasonForX11(CompositorAnswer compositor)
{
    switch (compositor) {
    case CompositorAnswer::Silent:
        return "the compositor does not answer, an X server does";
    case CompositorAnswer::Plain:
        return "the compositor offers no layer shell, but there is an X server";
    case CompositorAnswer::Absent:
    case CompositorAnswer::Unasked:
    case CompositorAnswer::LayerShell:
        break;
    }
    return "there is an X server and no compositor";
}

bool isX11Reachable()
{
    const XcbConnectionPointer connection(xcb_connect(nullptr, nullptr));
    return xcb_connection_has_error(connection.get()) == 0;
}

bool hasDisplay(const QString &platform, const DisplayFacts &facts)
{
    if (platform.startsWith("xcb"_L1))
        return facts.isX11Reachable;
    return !platform.startsWith("wayland"_L1) || facts.compositor != CompositorAnswer::Absent;
}

} // namespace

PlatformChoice choosePlatform(const DisplayFacts &facts)
{
    if (!facts.requestedPlatform.isEmpty())
        return {{}, "QT_QPA_PLATFORM asks for it"};
    if (facts.compositor == CompositorAnswer::LayerShell)
        return {"wayland", "the compositor offers a layer shell"};
    if (facts.compositor == CompositorAnswer::Unasked)
        return {"wayland", "WAYLAND_SOCKET asks for it"};
    if (facts.isX11Reachable)
        return {"xcb", reasonForX11(facts.compositor)};
    if (facts.compositor == CompositorAnswer::Plain)
        return {"wayland", "the compositor offers no layer shell, and there is no X server"};
    if (facts.compositor == CompositorAnswer::Silent)
        return {"wayland", "the compositor does not answer, and there is no X server"};
    return {{}, "there is no display"};
}

bool isCompositorWorthAsking(const QString &waylandDisplay, const QString &x11Display)
{
    return !waylandDisplay.isEmpty() || x11Display.isEmpty();
}

CompositorAnswer askCompositor(std::chrono::milliseconds timeout)
{
    // Connecting would use it up.
    if (qEnvironmentVariableIsSet("WAYLAND_SOCKET"))
        return CompositorAnswer::Unasked;
    const WaylandDisplayPointer display(wl_display_connect(nullptr));
    if (!display)
        return CompositorAnswer::Absent;
    const WaylandQueue queue(*display);
    const std::optional<WaylandGlobals> globals = WaylandGlobals::ask(queue, timeout);
    if (!globals)
        return CompositorAnswer::Silent;
    return globals->offers("zwlr_layer_shell_v1") ? CompositorAnswer::LayerShell : CompositorAnswer::Plain;
}

DisplayFacts findDisplayFacts(std::chrono::milliseconds timeout)
{
    DisplayFacts facts;
    facts.requestedPlatform = qEnvironmentVariable(platformVariable);
    const QStringList requested = facts.requestedPlatform.split(u';', Qt::SkipEmptyParts);
    const bool isFree = facts.requestedPlatform.isEmpty();
    const auto isRequested = [&requested](QLatin1StringView name) {
        return std::any_of(requested.begin(), requested.end(),
                           [name](const QString &platform) { return platform.startsWith(name); });
    };
    if (isFree ? isCompositorWorthAsking(qEnvironmentVariable("WAYLAND_DISPLAY"),
                                         qEnvironmentVariable("DISPLAY"))
               : isRequested("wayland"_L1))
        facts.compositor = askCompositor(timeout);
    if (isFree ? facts.compositor != CompositorAnswer::LayerShell : isRequested("xcb"_L1))
        facts.isX11Reachable = isX11Reachable();
    const auto used = std::find_if(requested.begin(), requested.end(),
                                   [&facts](const QString &platform) { return hasDisplay(platform, facts); });
    if (used != requested.end())
        facts.requestedPlatform = *used;
    return facts;
}

std::optional<QString> missingDisplay(const DisplayFacts &facts)
{
    const bool isChosen = !choosePlatform(facts).platform.isEmpty();
    if (isChosen || (!facts.requestedPlatform.isEmpty() && hasDisplay(facts.requestedPlatform, facts)))
        return std::nullopt;
    return u"no display: no Wayland compositor answers at WAYLAND_DISPLAY \"%1\" and no X server at DISPLAY \"%2\""_s
        .arg(qEnvironmentVariable("WAYLAND_DISPLAY"), qEnvironmentVariable("DISPLAY"));
}

PlatformEnvironment::PlatformEnvironment(const PlatformChoice &choice)
    : m_isSet(!choice.platform.isEmpty())
    , m_isSharedMemoryFree(!qEnvironmentVariableIsSet(noSharedMemoryVariable))
{
    if (m_isSet)
        qputenv(platformVariable, choice.platform);
    if (m_isSharedMemoryFree)
        qputenv(noSharedMemoryVariable, "1");
    if (!qEnvironmentVariableIsSet(roleVariable))
        qputenv(roleVariable, "1");
}

PlatformEnvironment::~PlatformEnvironment()
{
    if (m_isSet)
        qunsetenv(platformVariable);
    if (m_isSharedMemoryFree)
        qunsetenv(noSharedMemoryVariable);
}
