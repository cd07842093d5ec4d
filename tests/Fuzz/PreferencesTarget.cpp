// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakSettings.h"
#include "FileDate.h"
#include "JsonPreferences.h"
#include "PreferencesFile.h"
#include "Support/ScratchFolder.h"
#include "Target.h"
#include "UpdaterSettings.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using State = PreferencesContent::State;

namespace {

const QString intervalKey = u"OBIntervalMinutes"_s;
constexpr int chosenInterval = 30;

void checkSettings(const Preferences &preferences)
{
    const int minutes = BreakSettings::intervalMinutes(preferences);
    const int seconds = BreakSettings::pauseSeconds(preferences);
    require(std::ranges::any_of(BreakSettings::intervals,
                                [&](const auto &option) { return option.minutes == minutes; }),
            "the interval is one of those offered");
    require(std::ranges::any_of(BreakSettings::pauseDurations,
                                [&](const auto &option) { return option.secondes == seconds; }),
            "the break's length is one of those offered");
    const std::optional<FileDate> scan =
        FileDate::parse(preferences.text(u"OBLastCrashScan"_s).value_or(QString()));
    require(!scan || FileDate::parse(scan->text()) == scan, "a date of reports is written as it was read");
}

void checkUpdaterSettings(Preferences &preferences)
{
    const UpdaterSettings settings(preferences);
    const auto interval = settings.checkInterval();
    require(interval >= 60s && interval <= 100 * 365 * 24h,
            "the interval of update checks is within its limits");
    const UpdateVersion skipped = settings.skippedVersion();
    require(!skipped.isValid() || UpdateVersion(skipped.text()) == skipped, "a skipped version is valid");
    const std::optional<QDateTime> stored = preferences.date(u"SULastCheckTime"_s);
    require(settings.lastCheck().has_value() == stored.has_value(), "the last check is dated");
    require(!stored || settings.lastCheck()->time_since_epoch() / 1ms == stored->toMSecsSinceEpoch(),
            "the last check is dated");
}

/// A change by the program keeps all other values, and a damaged file as a whole.
void checkChange(const ScratchFolder &folder, JsonPreferences &preferences, const QByteArray &bytes)
{
    const PreferencesContent content = parsePreferences(bytes);
    preferences.setValue(intervalKey, chosenInterval);
    require(BreakSettings::intervalMinutes(preferences) == chosenInterval, "a change is in force");
    PreferencesMembers expected = content.members;
    expected.set(intervalKey, chosenInterval);
    const PreferencesContent written = readPreferences(folder.file());
    require(written.state == State::Values && written.members == expected, "a change keeps the rest");

    const QStringList aside = folder.asideNames();
    require(aside.size() == (content.state == State::Damaged ? 1 : 0), "a damaged file is set aside");
    require(aside.isEmpty() || folder.aside(aside.constFirst()) == bytes, "the file set aside is unchanged");
    require(folder.names().size() == aside.size() + 1, "nothing else is left beside the file");
}

} // namespace

/// The input is what another program writes into the file while this one runs.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const ScratchFolder folder;
    static JsonPreferences preferences(folder.file());
    folder.write("{}");
    require(preferences.value(intervalKey).isUndefined(), "an input begins with empty preferences");

    const QByteArray bytes = fuzzInput(data, size);
    folder.write(bytes);
    const PreferencesContent content = readPreferences(folder.file());
    require(content.state != State::Unreadable && content.state == parsePreferences(bytes).state,
            "a file is read like its bytes");
    acceptedInputs += content.state == State::Values ? 1 : 0;
    checkSettings(preferences);
    checkUpdaterSettings(preferences);
    checkChange(folder, preferences, bytes);
    for (const QString &name : folder.names())
        std::filesystem::remove(folder.path(name.toStdString()));
    return 0;
}
