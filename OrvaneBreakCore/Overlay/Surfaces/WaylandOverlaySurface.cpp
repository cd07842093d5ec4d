// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandOverlaySurface.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

#include <private/qhighdpiscaling_p.h>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds longestWait = 1s;

void resize(QWidget &panel, QSize native)
{
    if (!native.isEmpty())
        panel.resize(QHighDpi::fromNativePixels(native, panel.windowHandle()));
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
    m_deadline = std::chrono::steady_clock::now() + longestWait;
    // Comes before the toolkit moves the windows of the removed screen to another one, where it would show
    // them again.
    m_screenWatch =
        connect(qGuiApp, &QGuiApplication::screenRemoved, this, &WaylandOverlaySurface::dropScreen);
}

void WaylandOverlaySurface::present(QWidget &panel, QScreen &screen, bool /*takesKeyboard*/)
{
    panel.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                         Qt::BypassWindowManagerHint);
    panel.setScreen(&screen);
    panel.setGeometry(screen.geometry());
    panel.show();
    std::unique_ptr<LayerSurface> surface = cover(panel, screen);
    if (!surface) {
        panel.hide();
        return;
    }
    resize(panel, surface->size());
    surface->setHandlers(
        {[&panel](QSize size) { resize(panel, size); }, [this, &panel] { dropPanel(panel); }});
    m_layers.push_back({&panel, &screen, std::move(surface)});
}

/// A Wayland compositor tells the next program only which keys are down, and a program repeats only presses
/// that it was sent.
void WaylandOverlaySurface::end(const EndingPress & /*press*/)
{
    disconnect(m_screenWatch);
    m_layers.clear();
}

/// Before the event loop runs again: the first thing that the toolkit does with the surface is to give it a
/// buffer, which a surface without a configured role must not have.
std::unique_ptr<LayerSurface> WaylandOverlaySurface::cover(QWidget &panel, QScreen &screen) const
{
    QPlatformNativeInterface *native = QGuiApplication::platformNativeInterface();
    auto *surface =
        static_cast<wl_surface *>(native->nativeResourceForWindow("surface", panel.windowHandle()));
    auto *output = static_cast<wl_output *>(native->nativeResourceForScreen("output", &screen));
    // Without any output the toolkit has a stand-in for a screen.
    return surface && output ? m_shell->cover(*surface, *output, m_deadline) : nullptr;
}

void WaylandOverlaySurface::dropPanel(const QWidget &panel)
{
    const auto found = std::find_if(m_layers.begin(), m_layers.end(),
                                    [&panel](const Layer &layer) { return layer.panel == &panel; });
    if (found == m_layers.end())
        return;
    // The layer goes first: a surface that still has its role must not lose its window.
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
