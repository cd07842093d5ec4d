// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Appcast.h"
#include "UpdateChoice.h"
#include "UpdateInstaller.h"

#include <QString>

/// A message to the user, with an explanation.
struct UpdaterText
{
    QString message;
    QString information;
};

/// The updater's messages. Pure functions.
namespace UpdaterTexts {

/// This build has no key or no valid feed.
[[nodiscard]] UpdaterText notConfigured();

/// The feed could not be fetched or parsed.
[[nodiscard]] UpdaterText noFeed();

/// The feed is not signed by the makers.
[[nodiscard]] UpdaterText forgedFeed();

/// The feed is older than one that this program has seen.
[[nodiscard]] UpdaterText oldFeed();

/// The feed has expired, or this machine's clock is ahead.
[[nodiscard]] UpdaterText expiredFeed(const QDateTime &expiry);

/// There is no update, and why; `installed` is the version that starts next.
[[nodiscard]] UpdaterText noUpdate(NoUpdate reason, const QString &installed);

/// The download failed.
[[nodiscard]] UpdaterText noDownload();

[[nodiscard]] UpdaterText failure(UpdateFailure failure);

/// The version `failed` did not pass its trial; `installed` runs again.
[[nodiscard]] UpdaterText failedTrial(const QString &failed, const QString &installed);

/// A warning that no check has succeeded since `lastSuccess`.
[[nodiscard]] UpdaterText staleWarning(const QDateTime &lastSuccess);

} // namespace UpdaterTexts
