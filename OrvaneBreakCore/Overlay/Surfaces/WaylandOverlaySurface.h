// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LayerShell.h"
#include "OverlaySurface.h"

#include <QObject>

#include <memory>
#include <vector>

/// Layer surfaces: above panels and full-screen windows, on every workspace, in no task bar. All of them
/// request the keyboard, so that the break keeps it when the first screen is unplugged; the compositor
/// decides which one has it. A panel whose screen is unplugged is hidden. A panel that the compositor does
/// not configure within a second of `begin()` is not shown.
class WaylandOverlaySurface final : public QObject, public OverlaySurface
{
    Q_OBJECT

public:
    /// Nullptr if the compositor offers no layer shell or the environment keeps the toolkit from creating
    /// surfaces without a role. Needs an application object on the Wayland platform.
    [[nodiscard]] static std::unique_ptr<WaylandOverlaySurface> create();

    explicit WaylandOverlaySurface(std::unique_ptr<LayerShell> shell);

    void begin() override;
    void present(QWidget &panel, QScreen &screen, bool takesKeyboard) override;
    void end(const EndingPress &press) override;

private:
    struct Layer
    {
        QWidget *panel; ///< Outlives the layer: it is hidden only after `end()`.
        QScreen *screen;
        std::unique_ptr<LayerSurface> surface;
    };

    [[nodiscard]] std::unique_ptr<LayerSurface> cover(QWidget &panel, QScreen &screen) const;
    void dropPanel(const QWidget &panel);
    void dropScreen(const QScreen *screen);

    std::unique_ptr<LayerShell> m_shell;
    std::vector<Layer> m_layers;
    WaylandQueue::Deadline m_deadline;
    QMetaObject::Connection m_screenWatch;
};
