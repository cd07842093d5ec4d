// SPDX-License-Identifier: GPL-3.0-or-later
#include "LockAwareOverlay.h"

#include <utility>

namespace {

constexpr int updatesPerQuestion = 5;

} // namespace

LockAwareOverlay::LockAwareOverlay(std::unique_ptr<BreakOverlay> overlay, std::function<bool()> isLocked)
    : m_overlay(std::move(overlay))
    , m_isLocked(std::move(isLocked))
{
    m_overlay->onSkip = [this] {
        if (onSkip)
            onSkip();
    };
}

void LockAwareOverlay::show(int pauseSeconds)
{
    hide();
    m_pauseSeconds = pauseSeconds;
    followLock(pauseSeconds);
}

void LockAwareOverlay::update(double secondsLeft, double fraction)
{
    if (!m_pauseSeconds)
        return;
    if (++m_updates == updatesPerQuestion)
        followLock(*m_pauseSeconds);
    if (m_isShown)
        m_overlay->update(secondsLeft, fraction);
}

void LockAwareOverlay::hide()
{
    m_pauseSeconds.reset();
    if (std::exchange(m_isShown, false))
        m_overlay->hide();
}

void LockAwareOverlay::followLock(int pauseSeconds)
{
    m_updates = 0;
    const bool isToBeShown = !m_isLocked();
    if (isToBeShown == m_isShown)
        return;
    m_isShown = isToBeShown;
    if (isToBeShown)
        m_overlay->show(pauseSeconds);
    else
        m_overlay->hide();
}
