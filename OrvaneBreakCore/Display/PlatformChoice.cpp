// SPDX-License-Identifier: GPL-3.0-or-later
#include "PlatformChoice.h"

#include "DisplayProbe.h"
#include "NativePointers.h"
#include "WaylandGlobals.h"

#include <wayland-client-core.h>

#include <optional>

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
    case CompositorAnswer::LayerShell:
        break;
    }
    return "there is an X server and no compositor";
}

} // namespace

PlatformChoice choosePlatform(const DisplayFacts &facts)
{
    if (!facts.requestedPlatform.isEmpty())
        return {{}, "QT_QPA_PLATFORM asks for it"};
    if (facts.compositor == CompositorAnswer::LayerShell)
        return {"wayland", "the compositor offers a layer shell"};
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
    const WaylandDisplayPointer display(wl_display_connect(nullptr));
    if (!display)
        return CompositorAnswer::Absent;
    const WaylandQueue queue(*display);
    const std::optional<WaylandGlobals> globals = WaylandGlobals::ask(queue, timeout);
    if (!globals)
        return CompositorAnswer::Silent;
    return globals->offers("zwlr_layer_shell_v1") ? CompositorAnswer::LayerShell : CompositorAnswer::Plain;
}

DisplayFacts findDisplayFacts()
{
    DisplayFacts facts;
    facts.requestedPlatform = qEnvironmentVariable(platformVariable);
    const bool isFree = facts.requestedPlatform.isEmpty();
    const bool isWaylandRequested = facts.requestedPlatform.startsWith("wayland"_L1);
    if (isWaylandRequested || (isFree && isCompositorWorthAsking(qEnvironmentVariable("WAYLAND_DISPLAY"),
                                                                 qEnvironmentVariable("DISPLAY"))))
        facts.compositor = askCompositor(WaylandGlobals::defaultTimeout);
    if (isFree && facts.compositor != CompositorAnswer::LayerShell)
        facts.isX11Reachable = isX11Reachable();
    return facts;
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
