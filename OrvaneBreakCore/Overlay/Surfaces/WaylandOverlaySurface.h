// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LayerShell.h"
#include "OverlaySurface.h"

#include <QObject>

#include <memory>
#include <vector>

/// Layer surfaces of the compositor's: above panels and full-screen windows, on every workspace, in no task
/// bar. All of them take the keyboard, so that it stays with the break when the first screen is unplugged;
/// the compositor decides which has it. A panel whose screen is unplugged is hidden, one that the compositor
/// gives no place within a second of `begin()` is left out.
class WaylandOverlaySurface final : public QObject, public OverlaySurface
{
    Q_OBJECT

public:
    /// Nullptr where the compositor offers no layer shell or the environment keeps the toolkit from making
    /// windows without a role. Needs the application object, on its Wayland platform.
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
