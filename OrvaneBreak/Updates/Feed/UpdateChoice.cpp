// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateChoice.h"

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

/// One of the two names that systems have for the same architecture.
QString canonicalArchitecture(const QString &name)
{
    if (name == "aarch64"_L1)
        return u"arm64"_s;
    return name == "amd64"_L1 ? u"x86_64"_s : name;
}

std::optional<NoUpdate> objection(const AppcastItem &item, const UpdateCircumstances &circumstances)
{
    if (item.operatingSystem != circumstances.operatingSystem ||
        canonicalArchitecture(item.architecture) != canonicalArchitecture(circumstances.architecture) ||
        item.isRestricted)
        return NoUpdate::OtherSystem;
    if (item.date.isValid() && item.date > circumstances.now.addDays(1))
        return NoUpdate::FromTheFuture;
    if (!(item.version > circumstances.installed))
        return NoUpdate::UpToDate;
    if (item.maximumSystemVersion.isValid() && !(circumstances.systemVersion <= item.maximumSystemVersion))
        return NoUpdate::OtherSystem;
    if (item.minimumSystemVersion.isValid() && !(circumstances.systemVersion >= item.minimumSystemVersion))
        return NoUpdate::SystemTooOld;
    if (item.isCritical || circumstances.isAskedByUser)
        return std::nullopt;
    const bool isLater =
        item.rolloutInterval.count() > 0 && item.date.isValid() &&
        circumstances.now < item.date.addSecs(circumstances.rolloutGroup * item.rolloutInterval.count());
    if (isLater || item.version <= circumstances.skipped)
        return NoUpdate::Skipped;
    return std::nullopt;
}

} // namespace

std::variant<AppcastItem, NoUpdate> chooseUpdate(const Appcast &feed,
                                                 const UpdateCircumstances &circumstances)
{
    const AppcastItem *newest = nullptr;
    NoUpdate closest = NoUpdate::EmptyFeed;
    for (const AppcastItem &item : feed.items) {
        if (const auto reason = objection(item, circumstances))
            closest = std::max(closest, *reason);
        else if (!newest || item.version > newest->version)
            newest = &item;
    }
    if (newest)
        return *newest;
    return feed.newestUnusable > circumstances.installed ? NoUpdate::Unusable : closest;
}
