// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakEngine.h"

#include "BreakSettings.h"
#include "Chime.h"
#include "Preferences.h"
#include "SharedInstance.h"
#include "StatusText.h"
#include "UserIdle.h"

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

/// A due break is skipped when the user has been away for at least this many seconds.
constexpr double idleSkipThreshold = 300.0;

constexpr Interval nextBreakTolerance = 10s;
constexpr Interval statusInterval = 60s;
constexpr Interval statusTolerance = 5s;
constexpr Interval ringInterval = 100ms;

} // namespace

BreakEngine::BreakEngine(Services services)
    : m_runLoop(services.runLoop)
    , m_preferences(services.preferences)
    , m_userIdle(services.userIdle)
    , m_chime(services.chime)
    , m_overlay(std::move(services.overlay))
{
    // The engine owns the overlay, so the handler cannot be called after the engine is gone.
    m_overlay->onSkip = [this] { endBreak(); };
}

BreakEngine &BreakEngine::shared()
{
    return SharedInstance<BreakEngine>::get();
}

void BreakEngine::start()
{
    if (m_isActive)
        return;
    m_isActive = true;
    scheduleNext(BreakSettings::intervalMinutes(m_preferences));
    notifyChange();
}

void BreakEngine::stop()
{
    m_isActive = false;
    cancelSchedule();
    if (m_isOnBreak)
        closeOverlay();
    notifyChange();
}

void BreakEngine::breakNow()
{
    if (m_isOnBreak)
        return;
    cancelSchedule();
    beginBreak();
}

void BreakEngine::postpone(int minutes)
{
    if (m_isOnBreak)
        closeOverlay();
    if (!m_isActive)
        return;
    scheduleNext(minutes);
    notifyChange();
}

void BreakEngine::rescheduleFromSettings()
{
    if (!m_isActive || m_isOnBreak)
        return;
    scheduleNext(BreakSettings::intervalMinutes(m_preferences));
    notifyChange();
}

QString BreakEngine::statusText() const
{
    return breakStatusText(m_isOnBreak, m_isActive, m_nextBreakDate, m_runLoop.now());
}

void BreakEngine::scheduleNext(int minutes)
{
    const Date due = m_runLoop.now() + std::chrono::minutes(minutes);
    m_nextBreakDate = due;
    m_nextTimer = m_runLoop.scheduleOnce(due, nextBreakTolerance, [this] { breakDue(); });
    // A running tick keeps its phase.
    if (!m_statusTick)
        m_statusTick =
            m_runLoop.scheduleRepeating(statusInterval, statusTolerance, [this] { notifyChange(); });
}

void BreakEngine::cancelSchedule()
{
    m_nextTimer.invalidate();
    m_statusTick.invalidate();
    m_nextBreakDate.reset();
}

void BreakEngine::breakDue()
{
    if (idleSeconds() >= idleSkipThreshold) {
        scheduleNext(BreakSettings::intervalMinutes(m_preferences));
        notifyChange();
        return;
    }
    cancelSchedule();
    beginBreak();
}

void BreakEngine::beginBreak()
{
    m_isOnBreak = true;
    m_nextBreakDate.reset();
    const int pauseSeconds = BreakSettings::pauseSeconds(m_preferences);
    m_breakEndDate = m_runLoop.now() + std::chrono::seconds(pauseSeconds);
    m_overlay->show(pauseSeconds);
    if (BreakSettings::soundEnabled(m_preferences))
        m_chime.play(u"Glass"_s);
    // A break can begin over a running one, when reminders are switched on during it and the clock then jumps
    // past the next due date. The countdown under way is not interrupted for that; it stops with the break.
    if (m_ringTimer)
        m_replacedRingTimers.push_back(std::move(m_ringTimer));
    m_ringTimer = m_runLoop.scheduleRepeating(ringInterval, Interval::zero(), [this] { ringTick(); });
    notifyChange();
}

void BreakEngine::ringTick()
{
    if (!m_breakEndDate)
        return;
    const Interval remaining = *m_breakEndDate - m_runLoop.now();
    if (remaining <= Interval::zero()) {
        endBreak();
        return;
    }
    const double secondsLeft = std::chrono::duration<double>(remaining).count();
    // The length is read again on every tick, so that a change during the break shows at once; the end stays.
    m_overlay->update(secondsLeft, secondsLeft / BreakSettings::pauseSeconds(m_preferences));
}

void BreakEngine::endBreak()
{
    closeOverlay();
    if (m_isActive)
        scheduleNext(BreakSettings::intervalMinutes(m_preferences));
    notifyChange();
}

void BreakEngine::closeOverlay()
{
    m_ringTimer.invalidate();
    m_replacedRingTimers.clear();
    m_breakEndDate.reset();
    m_overlay->hide();
    m_isOnBreak = false;
}

void BreakEngine::notifyChange() const
{
    if (onChange)
        onChange();
}

double BreakEngine::idleSeconds() const
{
    const InputIdleSeconds seconds = m_userIdle.secondsSinceLastInput();
    return *std::min_element(seconds.begin(), seconds.end());
}
