// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandOverlaySurface.h"

#include "ScreenFrame.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>
#include <qpa/qplatformscreen.h>

#include <private/qhighdpiscaling_p.h>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds coverTimeout = 1s;

void resize(QWidget &panel, QSize native)
{
    if (!native.isEmpty())
        panel.resize(coveringSize(native, QHighDpiScaling::factor(panel.windowHandle())));
}

} // namespace

std::unique_ptr<WaylandOverlaySurface> WaylandOverlaySurface::create()
{
    auto *display = static_cast<wl_display *>(
        QGuiApplication::platformNativeInterface()->nativeResourceForIntegration("wl_display"));
    if (!display || qEnvironmentVariableIntValue("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT") == 0)
        return nullptr;
    std::unique_ptr<LayerShell> shell = LayerShell::find(*display);
    return shell ? std::make_unique<WaylandOverlaySurface>(std::move(shell)) : nullptr;
}

WaylandOverlaySurface::WaylandOverlaySurface(std::unique_ptr<LayerShell> shell)
    : m_shell(std::move(shell))
{
}

void WaylandOverlaySurface::begin()
{
    m_layers.clear();
    m_deadline = std::chrono::steady_clock::now() + coverTimeout;
    // Emitted before the toolkit moves the windows of that screen to another one and shows them there again.
    m_screenWatch =
        connect(qGuiApp, &QGuiApplication::screenRemoved, this, &WaylandOverlaySurface::dropScreen);
}

void WaylandOverlaySurface::present(QWidget &panel, QScreen &screen, bool /*takesKeyboard*/)
{
    panel.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                         Qt::BypassWindowManagerHint);
    panel.setScreen(&screen);
    panel.setGeometry(screen.geometry());
    // Creates the wl_surface. Qt 6.10 and later paint it within show(), so the role comes before.
    panel.winId();
    std::unique_ptr<LayerSurface> surface = cover(panel, screen);
    if (!surface)
        return;
    resize(panel, surface->size());
    surface->setHandlers(
        {[&panel](QSize size) { resize(panel, size); }, [this, &panel] { dropPanel(panel); }});
    m_layers.push_back({&panel, &screen, std::move(surface)});
    panel.show();
}

/// A Wayland compositor tells the next program only which keys are down, and a program repeats only presses
/// that it was sent.
void WaylandOverlaySurface::end(const EndingPress & /*press*/)
{
    disconnect(m_screenWatch);
    m_layers.clear();
}

/// Runs before the panel is shown: the toolkit's first action on the surface is to attach a buffer, which is
/// a protocol error before the role is configured.
std::unique_ptr<LayerSurface> WaylandOverlaySurface::cover(QWidget &panel, QScreen &screen) const
{
    // While there is no output, the toolkit has a placeholder that must not be asked for one.
    if (screen.handle()->isPlaceholder())
        return nullptr;
    QPlatformNativeInterface *native = QGuiApplication::platformNativeInterface();
    auto *surface =
        static_cast<wl_surface *>(native->nativeResourceForWindow("surface", panel.windowHandle()));
    auto *output = static_cast<wl_output *>(native->nativeResourceForScreen("output", &screen));
    return surface && output ? m_shell->cover(*surface, *output, m_deadline) : nullptr;
}

void WaylandOverlaySurface::dropPanel(const QWidget &panel)
{
    const auto found = std::find_if(m_layers.begin(), m_layers.end(),
                                    [&panel](const Layer &layer) { return layer.panel == &panel; });
    if (found == m_layers.end())
        return;
    // The role is destroyed before the surface, as the protocol demands.
    QWidget *dropped = found->panel;
    m_layers.erase(found);
    dropped->hide();
}

void WaylandOverlaySurface::dropScreen(const QScreen *screen)
{
    const auto found = std::find_if(m_layers.begin(), m_layers.end(),
                                    [screen](const Layer &layer) { return layer.screen == screen; });
    if (found != m_layers.end())
        dropPanel(*found->panel);
}
