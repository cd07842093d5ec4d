// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

#include <array>

class Preferences;

/// The persisted break settings and the choices offered for them. Nothing is cached: every read goes to the
/// preferences.
struct BreakSettings
{
    struct IntervalOption
    {
        QStringView titre;
        int minutes = 0;
    };

    struct PauseOption
    {
        QStringView titre;
        int secondes = 0;
    };

    static constexpr std::array<IntervalOption, 4> intervals{{
        {u"10 minutes", 10},
        {u"20 minutes", 20},
        {u"30 minutes", 30},
        {u"45 minutes", 45},
    }};

    static constexpr std::array<PauseOption, 3> pauseDurations{{
        {u"20 secondes", 20},
        {u"30 secondes", 30},
        {u"60 secondes", 60},
    }};

    /// Minutes between breaks, always one of `intervals`: a missing or other value under "OBIntervalMinutes"
    /// reads as 20 and is left in place.
    [[nodiscard]] static int intervalMinutes(const Preferences &preferences);

    /// Stores `minutes` under "OBIntervalMinutes" as it is, unchecked.
    static void setIntervalMinutes(Preferences &preferences, int minutes);

    /// Seconds of one break, always one of `pauseDurations`: a missing or other value under "OBPauseSeconds"
    /// reads as 20 and is left in place.
    [[nodiscard]] static int pauseSeconds(const Preferences &preferences);

    /// Stores `seconds` under "OBPauseSeconds" as it is, unchecked.
    static void setPauseSeconds(Preferences &preferences, int seconds);

    /// Whether a sound is played when a break begins, kept under "OBSoundEnabled"; false when missing.
    [[nodiscard]] static bool soundEnabled(const Preferences &preferences);
    static void setSoundEnabled(Preferences &preferences, bool enabled);
};
