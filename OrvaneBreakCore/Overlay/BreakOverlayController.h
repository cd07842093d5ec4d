// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BreakOverlay.h"
#include "OverlaySurface.h"

#include <QList>
#include <QObject>

#include <functional>
#include <memory>
#include <vector>

class BreakOverlayPanel;
class QScreen;
class RingView;

/// Covers every screen with a break panel and feeds their rings. Knows nothing of time. The panels keep the
/// screens of the moment of `show()`: a screen that comes later stays free, one that goes takes nothing else
/// with it.
class BreakOverlayController final : public QObject, public BreakOverlay
{
    Q_OBJECT

public:
    using Screens = std::function<QList<QScreen *>()>;

    /// `surface` outlives the controller. `screens` lists the screens at the moment of the call.
    BreakOverlayController(OverlaySurface &surface, Screens screens);
    ~BreakOverlayController() override;

    /// Paints a break that nobody sees, so that fonts and glyphs are loaded before the first one. For a
    /// moment when the program is idle.
    static void warmUp();

    /// One panel per screen, the first with the keyboard. Closes the program's open menus and lists first.
    /// Without screens nothing is shown and nothing closed.
    void show(int pauseSeconds) override;

    /// A number of seconds that is not finite or beyond 64 bits stops the process.
    void update(double secondsLeft, double fraction) override;

    void hide() override;

    /// True while there are panels.
    [[nodiscard]] bool isVisible() const { return !m_panels.empty(); }

    /// Calls `onSkip` if set; what the skip button of every panel does.
    void skipPressed();

private:
    /// A panel is hidden inside its own key and mouse events, so it is deleted after them.
    struct DeferredDelete
    {
        void operator()(QObject *object) const { object->deleteLater(); }
    };

    void skip(const EndingPress &press);

    OverlaySurface &m_surface;
    Screens m_screens;
    EndingPress m_endingPress; ///< While `onSkip` is called; empty at other times.
    std::vector<std::unique_ptr<BreakOverlayPanel, DeferredDelete>> m_panels;
    std::vector<RingView *> m_rings;
};
