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
constexpr std::chrono::milliseconds keyboardInterval = 500ms;

/// Nullptr while there is none: then the toolkit has a placeholder that must not be asked for one.
wl_output *outputOf(QScreen *screen)
{
    if (!screen || screen->handle()->isPlaceholder())
        return nullptr;
    return static_cast<wl_output *>(
        QGuiApplication::platformNativeInterface()->nativeResourceForScreen("output", screen));
}

/// The toolkit's object of that name, or nullptr.
void *nativeResource(const char *name)
{
    return QGuiApplication::platformNativeInterface()->nativeResourceForIntegration(name);
}

void resize(QWidget &panel, QSize native)
{
    if (!native.isEmpty())
        panel.resize(coveringSize(native, QHighDpiScaling::factor(panel.windowHandle())));
}

} // namespace

std::unique_ptr<WaylandOverlaySurface> WaylandOverlaySurface::create()
{
    auto *display = static_cast<wl_display *>(nativeResource("wl_display"));
    if (!display || qEnvironmentVariableIntValue("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT") == 0)
        return nullptr;
    auto surface = std::make_unique<WaylandOverlaySurface>(*display);
    // Each break looks for it again; asking now leaves a slow compositor the time until then.
    static_cast<void>(surface->findShell());
    return surface;
}

WaylandOverlaySurface::WaylandOverlaySurface(wl_display &display)
    : m_display(display)
{
    m_keyboardTimer.setInterval(keyboardInterval);
    m_keyboardTimer.callOnTimeout([this] { takeKeyboardBack(); });
}

bool WaylandOverlaySurface::findShell()
{
    if (!m_shell)
        m_shell = LayerShell::find(m_display);
    if (m_shell && !m_probe)
        m_probe = std::make_unique<LayerProbe>(m_display, *m_shell);
    return m_shell != nullptr;
}

bool WaylandOverlaySurface::isDrawn()
{
    if (m_isBreak)
        return !m_isUnderLock;
    wl_output *output = outputOf(QGuiApplication::primaryScreen());
    return !output || !findShell() || m_probe->isDrawn(*output);
}

void WaylandOverlaySurface::begin()
{
    m_layers.clear();
    m_isUnderLock = false;
    m_isBreak = true;
    if (!findShell())
        return;
    m_deadline = std::chrono::steady_clock::now() + coverTimeout;
    // Emitted before the toolkit moves the windows of that screen to another one and shows them there again.
    m_screenWatch =
        connect(qGuiApp, &QGuiApplication::screenRemoved, this, &WaylandOverlaySurface::dropScreen);
    watchKeyboard();
}

void WaylandOverlaySurface::present(QWidget &panel, QScreen &screen, bool takesKeyboard)
{
    if (!m_shell) {
        m_fallback.present(panel, screen, takesKeyboard);
        return;
    }
    panel.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                         Qt::BypassWindowManagerHint);
    panel.setScreen(&screen);
    panel.setGeometry(screen.geometry());
    // Creates the wl_surface. Qt 6.10 and later paint it within show(), so the role comes before.
    panel.winId();
    auto *native = static_cast<wl_surface *>(
        QGuiApplication::platformNativeInterface()->nativeResourceForWindow("surface", panel.windowHandle()));
    std::unique_ptr<LayerSurface> surface = cover(native, screen);
    if (!surface)
        return;
    resize(panel, surface->size());
    surface->setHandlers(
        {[&panel](QSize size) { resize(panel, size); }, [this, &panel] { dropPanel(panel); }});
    m_layers.push_back({&panel, &screen, native, std::move(surface)});
    panel.show();
}

/// A Wayland compositor tells the next program only which keys are down, and a program repeats only presses
/// that it was sent.
void WaylandOverlaySurface::end(const EndingPress & /*press*/)
{
    disconnect(m_screenWatch);
    m_keyboardTimer.stop();
    m_keyboard.reset();
    // Otherwise the keyboard goes from each panel to the next, and from the last one to nobody.
    for (const Layer &layer : m_layers)
        layer.surface->setKeyboardWanted(false);
    m_layers.clear();
    m_isBreak = false;
}

void WaylandOverlaySurface::watchKeyboard()
{
    auto *seat = static_cast<wl_seat *>(nativeResource("wl_seat"));
    // Without a keyboard the seat must not be asked for one.
    if (!seat || !nativeResource("wl_keyboard"))
        return;
    m_keyboard.emplace(*seat, [this] {
        if (hasKeyboard())
            m_keyboardTimer.stop();
        else
            m_keyboardTimer.start();
    });
    m_keyboardTimer.start();
}

bool WaylandOverlaySurface::hasKeyboard() const
{
    return std::any_of(m_layers.begin(), m_layers.end(),
                       [this](const Layer &layer) { return layer.native == m_keyboard->focus(); });
}

void WaylandOverlaySurface::takeKeyboardBack()
{
    if (m_layers.empty())
        return;
    wl_output *output = outputOf(m_layers.front().screen);
    m_isUnderLock = output && !m_probe->isDrawn(*output);
    if (m_isUnderLock)
        return;
    // Compositors look at whom to give the keyboard when this changes.
    for (const bool isWanted : {false, true})
        m_layers.front().surface->setKeyboardWanted(isWanted);
}

/// Runs before the panel is shown: the toolkit's first action on the surface is to attach a buffer, which is
/// a protocol error before the role is configured.
std::unique_ptr<LayerSurface> WaylandOverlaySurface::cover(wl_surface *surface, QScreen &screen) const
{
    wl_output *output = outputOf(&screen);
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
