// SPDX-License-Identifier: GPL-3.0-or-later
#include "Http.h"
#include "Target.h"
#include "UpdateChoice.h"

#include <QTimeZone>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype feedLimit = 1'048'576;
constexpr std::size_t itemLimit = 1'000;
constexpr qsizetype lineLimit = 200;
constexpr qsizetype notesLimit = 20'000;
constexpr qint64 archiveLimit = 1'073'741'824;

void checkItem(const AppcastItem &item)
{
    require(item.version.isValid() && item.version == UpdateVersion(item.version.text()),
            "an item has a version");
    require(Http::isAllowed(item.archive), "an archive has an allowed address");
    require(item.length > 0 && item.length <= archiveLimit, "an archive has a length within the limit");
    require(item.signature.size() == 64, "an archive has a signature");
    require(!item.displayVersion.isEmpty() && item.displayVersion.size() <= lineLimit,
            "the version to display is one short line");
    require(item.releaseNotes.size() <= notesLimit, "notes are short");
}

void checkChoice(const Appcast &feed)
{
    const QDateTime now(QDate(2026, 3, 3), QTime(13, 5), QTimeZone::utc());
    UpdateCircumstances circumstances;
    circumstances.installed = UpdateVersion(u"1.0"_s);
    circumstances.operatingSystem = u"linux"_s;
    circumstances.architecture = u"x86_64"_s;
    circumstances.systemVersion = UpdateVersion(u"6.1"_s);
    circumstances.now = now;
    const auto choice = chooseUpdate(feed, circumstances);
    const auto *chosen = std::get_if<AppcastItem>(&choice);
    if (!chosen) {
        require(!feed.items.empty() || feed.newestUnusable.isValid() ||
                    std::get<NoUpdate>(choice) == NoUpdate::EmptyFeed,
                "nothing is chosen from an empty feed");
        return;
    }
    require(chosen->version > circumstances.installed, "an update is newer");
    require(chosen->operatingSystem == circumstances.operatingSystem &&
                (chosen->architecture == "x86_64"_L1 || chosen->architecture == "amd64"_L1),
            "an update is for this system");
    require(!chosen->isRestricted, "an update runs on this system");
    require(!chosen->date.isValid() || chosen->date <= now.addDays(1), "an update is not from the future");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes = fuzzInput(data, size);
    const auto feed = parseAppcast(bytes, &Http::isAllowed);
    if (!feed)
        return 0;
    require(bytes.size() <= feedLimit && feed->items.size() <= itemLimit,
            "an accepted feed is within the limits");
    acceptedInputs += feed->items.empty() ? 0 : 1;
    for (const AppcastItem &item : feed->items)
        checkItem(item);
    checkChoice(*feed);
    return 0;
}
