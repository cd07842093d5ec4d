// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Appcast.h"
#include "UpdateChoice.h"
#include "UpdateInstaller.h"

#include <QString>

/// What the user is told.
struct UpdaterText
{
    QString message;
    QString information;
};

/// How the updater puts it to the user. Pure functions.
namespace UpdaterTexts {

/// Why the updater does not work in this build.
[[nodiscard]] UpdaterText notConfigured();

/// The feed did not come, or is none.
[[nodiscard]] UpdaterText noFeed();

/// There is nothing to install, and why; `installed` is the version that runs.
[[nodiscard]] UpdaterText noUpdate(NoUpdate reason, const QString &installed);

/// The download broke off for good.
[[nodiscard]] UpdaterText noDownload();

[[nodiscard]] UpdaterText failure(UpdateFailure failure);

/// What is added when no check has succeeded since `lastSuccess`.
[[nodiscard]] QString staleWarning(const QDateTime &lastSuccess);

} // namespace UpdaterTexts
