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
    UpdateVersion systemVersion; ///< Of the C library. No version when unknown; no minimum is met then.
    QDateTime now;
    UpdateVersion skipped;      ///< Skipped by the user, with all older versions; may be no version.
    int rolloutGroup = 0;       ///< This user's, from 0 for the first who get a version to 6 for the last.
    bool isAskedByUser = false; ///< A check that the user asked for finds all versions.
};

/// Why there is no update, ordered by how close an item came to being chosen, closest last.
enum class NoUpdate
{
    EmptyFeed,
    OtherSystem,   ///< For another operating system, architecture or group of users.
    FromTheFuture, ///< Dated more than a day ahead.
    UpToDate,      ///< Not newer than the installed version.
    SystemTooOld,  ///< Needs a newer operating system.
    Skipped,       ///< Not newer than the skipped version, or not this user's turn, and not critical.
    Unusable,      ///< Newer, but incomplete or with an address that the program may not talk to.
};

/// The newest suitable item, the first one of equal versions, or else the closest reason. A pure function.
[[nodiscard]] std::variant<AppcastItem, NoUpdate> chooseUpdate(const Appcast &feed,
                                                               const UpdateCircumstances &circumstances);
