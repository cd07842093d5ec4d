// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FullScreenOverlaySurface.h"
#include "LayerProbe.h"
#include "LayerShell.h"
#include "OverlaySurface.h"
#include "WaylandKeyboard.h"

#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

/// Layer surfaces: above panels and full-screen windows, on every workspace, in no task bar. All of them
/// request the keyboard, so that the break keeps it when the first screen is unplugged; the compositor
/// decides which one has it. While none has, one asks again every half second, unless a lock screen is up.
/// A panel whose screen is unplugged is hidden. A panel that the compositor does not configure within a
/// second of `begin()` is not shown. Breaks for which the compositor offers no layer shell have full-screen
/// windows.
class WaylandOverlaySurface final : public QObject, public OverlaySurface
{
    Q_OBJECT

public:
    /// Nullptr if the environment keeps the toolkit from creating surfaces without a role. Needs an
    /// application object on the Wayland platform.
    [[nodiscard]] static std::unique_ptr<WaylandOverlaySurface> create();

    explicit WaylandOverlaySurface(wl_display &display);

    [[nodiscard]] bool isDrawn() override;
    void begin() override;
    void present(QWidget &panel, QScreen &screen, bool takesKeyboard) override;
    void end(const EndingPress &press) override;

private:
    struct Layer
    {
        QWidget *panel; ///< Outlives the layer: it is hidden only after `end()`.
        QScreen *screen;
        const wl_surface *native;
        std::unique_ptr<LayerSurface> surface;
    };

    [[nodiscard]] std::unique_ptr<LayerSurface> cover(wl_surface *surface, QScreen &screen) const;
    [[nodiscard]] bool findShell();
    void watchKeyboard();
    [[nodiscard]] bool hasKeyboard() const;
    void takeKeyboardBack();
    void dropPanel(const QWidget &panel);
    void dropScreen(const QScreen *screen);

    wl_display &m_display;
    std::unique_ptr<LayerShell> m_shell; ///< Nullptr until the compositor offers one.
    std::unique_ptr<LayerProbe> m_probe; ///< There is one if there is a shell.
    FullScreenOverlaySurface m_fallback;
    std::vector<Layer> m_layers;
    std::optional<WaylandKeyboard> m_keyboard; ///< During a break.
    QTimer m_keyboardTimer;
    bool m_isBreak = false;
    bool m_isUnderLock = false; ///< During a break.
    WaylandQueue::Deadline m_deadline;
    QMetaObject::Connection m_screenWatch;
};
