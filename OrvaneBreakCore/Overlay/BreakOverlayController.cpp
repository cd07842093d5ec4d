// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakOverlayController.h"

#include "BreakOverlayPanel.h"
#include "RingView.h"

#include <QApplication>
#include <QPixmap>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

/// A modal dialog blocks all windows that do not belong to it, and the user must still be able to end the
/// break.
void letThroughModalDialog(const QWidget &panel)
{
    const QWidget *dialog = QApplication::activeModalWidget();
    if (dialog && panel.windowHandle())
        panel.windowHandle()->setTransientParent(dialog->windowHandle());
}

/// The toolkit gives an open menu or list every key and click, whatever window has the focus.
void closePopups()
{
    const QWidget *last = nullptr;
    QWidget *popup = QApplication::activePopupWidget();
    while (popup && popup != last) {
        popup->close();
        last = std::exchange(popup, QApplication::activePopupWidget());
    }
}

} // namespace

BreakOverlayController::BreakOverlayController(OverlaySurface &surface, Screens screens)
    : m_surface(surface)
    , m_screens(std::move(screens))
{
}

BreakOverlayController::~BreakOverlayController()
{
    hide();
}

void BreakOverlayController::warmUp()
{
    BreakOverlayPanel panel(20);
    panel.adjustSize();
    panel.grab();
}

void BreakOverlayController::show(int pauseSeconds)
{
    hide();
    const QList<QScreen *> screens = m_screens();
    if (screens.isEmpty())
        return;
    closePopups();
    m_surface.begin();
    for (QScreen *screen : screens) {
        std::unique_ptr<BreakOverlayPanel, DeferredDelete> panel(new BreakOverlayPanel(pauseSeconds));
        panel->onEscape = [self = QPointer(this), pressed = panel.get()] {
            if (self)
                self->skip({.key = pressed->pressedKey(), .clicked = {}});
        };
        const QPushButton *button = panel->skipButton();
        connect(button, &QPushButton::clicked, this, [this, button] {
            skip({.key = 0, .clicked = QRect(button->mapToGlobal(QPoint()), button->size())});
        });
        m_surface.present(*panel, *screen, m_panels.empty());
        letThroughModalDialog(*panel);
        m_rings.push_back(panel->ring());
        m_panels.push_back(std::move(panel));
    }
}

void BreakOverlayController::update(double secondsLeft, double fraction)
{
    const double roundedUp = std::ceil(secondsLeft);
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (!(roundedUp >= -limit && roundedUp < limit))
        qFatal("a countdown of %f seconds", secondsLeft);
    for (RingView *ring : m_rings) {
        ring->setSecondsLeft(std::max<qint64>(static_cast<qint64>(roundedUp), 0));
        ring->setFraction(fraction);
    }
}

void BreakOverlayController::hide()
{
    if (m_panels.empty())
        return;
    m_surface.end(m_endingPress);
    for (const auto &panel : m_panels)
        panel->hide();
    m_panels.clear();
    m_rings.clear();
}

void BreakOverlayController::skip(const EndingPress &press)
{
    m_endingPress = press;
    skipPressed();
    m_endingPress = {};
}

void BreakOverlayController::skipPressed()
{
    if (onSkip)
        onSkip();
}
