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

/// There is no update, and why; `installed` is the running version.
[[nodiscard]] UpdaterText noUpdate(NoUpdate reason, const QString &installed);

/// The download failed.
[[nodiscard]] UpdaterText noDownload();

[[nodiscard]] UpdaterText failure(UpdateFailure failure);

/// A warning that no check has succeeded since `lastSuccess`.
[[nodiscard]] QString staleWarning(const QDateTime &lastSuccess);

} // namespace UpdaterTexts
