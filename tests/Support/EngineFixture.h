// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/BreakEngine.h"
#include "Support/EngineFakes.h"
#include "Support/ManualRunLoop.h"
#include "Support/MemoryPreferences.h"

/// An engine on a manual clock, with everything it calls written down in `log`: overlay, chime and "change".
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
