// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakSettings.h"

#include "Preferences.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QString intervalKey = u"OBIntervalMinutes"_s;
const QString pauseKey = u"OBPauseSeconds"_s;
const QString soundKey = u"OBSoundEnabled"_s;

/// The default of both settings: minutes between breaks, and seconds of a break.
constexpr int defaultNumber = 20;

template <typename Options, typename Number>
int validated(const Preferences &preferences, const QString &key, const Options &options, Number number)
{
    const qint64 stored = preferences.integer(key).value_or(0);
    const auto isStored = [&](const auto &option) { return option.*number == stored; };
    return std::any_of(options.begin(), options.end(), isStored) ? static_cast<int>(stored) : defaultNumber;
}

} // namespace

int BreakSettings::intervalMinutes(const Preferences &preferences)
{
    return validated(preferences, intervalKey, intervals, &IntervalOption::minutes);
}

void BreakSettings::setIntervalMinutes(Preferences &preferences, int minutes)
{
    preferences.setValue(intervalKey, minutes);
}

int BreakSettings::pauseSeconds(const Preferences &preferences)
{
    return validated(preferences, pauseKey, pauseDurations, &PauseOption::secondes);
}

void BreakSettings::setPauseSeconds(Preferences &preferences, int seconds)
{
    preferences.setValue(pauseKey, seconds);
}

bool BreakSettings::soundEnabled(const Preferences &preferences)
{
    return preferences.boolean(soundKey).value_or(false);
}

void BreakSettings::setSoundEnabled(Preferences &preferences, bool enabled)
{
    preferences.setValue(soundKey, enabled);
}
