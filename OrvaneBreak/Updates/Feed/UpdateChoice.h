// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Appcast.h"

#include <variant>

/// The criteria for choosing an update.
struct UpdateCircumstances
{
    UpdateVersion installed;
    QString operatingSystem;     ///< As in the feed: "linux".
    QString architecture;        ///< "x86_64" or "amd64", "arm64" or "aarch64": either spelling.
    UpdateVersion systemVersion; ///< No version when unknown; no minimum is met then.
    QDateTime now;
    UpdateVersion skipped;      ///< Skipped by the user, with all older versions; may be no version.
    bool isAskedByUser = false; ///< A check that the user asked for also finds skipped versions.
};

/// Why there is no update, ordered by how close an item came to being chosen, closest last.
enum class NoUpdate
{
    EmptyFeed,
    OtherSystem,   ///< For another operating system or architecture.
    FromTheFuture, ///< Dated more than a day ahead.
    UpToDate,      ///< Not newer than the installed version.
    SystemTooOld,  ///< Needs a newer operating system.
    Skipped,       ///< Not newer than the skipped version, and not critical.
};

/// The newest suitable item, the first one of equal versions, or else the closest reason. A pure function.
[[nodiscard]] std::variant<AppcastItem, NoUpdate> chooseUpdate(const Appcast &feed,
                                                               const UpdateCircumstances &circumstances);
