// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BreakEngine.h"
#include "EngineFakes.h"
#include "ManualRunLoop.h"
#include "MemoryPreferences.h"

/// An engine on a manual clock. `log` has its calls on the overlay and the chime, and "change" for each
/// onChange.
struct EngineFixture
{
    EngineFixture()
    {
        engine.onChange = [this] { log.append(QStringLiteral("change")); };
    }

    /// The log since the last call.
    QStringList takeLog() { return std::exchange(log, {}); }

    QStringList log;
    ManualRunLoop runLoop;
    MemoryPreferences preferences;
    FakeUserIdle userIdle;
    FakeChime chime{log};
    FakeOverlay *overlay = new FakeOverlay(log); // owned by the engine
    BreakEngine engine{{runLoop, preferences, userIdle, chime, std::unique_ptr<BreakOverlay>(overlay)}};
};

/// A line like "once 1200 ±10" for each timer: kind, time until due (or interval) and tolerance in seconds.
inline QStringList timerLines(const ManualRunLoop &runLoop)
{
    QStringList lines;
    for (const auto &entry : runLoop.timers()) {
        const bool isRepeating = entry.interval > Interval::zero();
        const Interval time = isRepeating ? entry.interval : entry.due - runLoop.now();
        lines << QStringLiteral("%1 %2 ±%3")
                     .arg(isRepeating ? QStringLiteral("every") : QStringLiteral("once"))
                     .arg(std::chrono::duration<double>(time).count())
                     .arg(std::chrono::duration<double>(entry.tolerance).count());
    }
    return lines;
}
