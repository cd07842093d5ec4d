// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Appcast.h"

#include <variant>

/// What decides which update there is.
struct UpdateCircumstances
{
    UpdateVersion installed;
    QString operatingSystem;     ///< As in the feed: "linux".
    QString architecture;        ///< As in the feed: "x86_64".
    UpdateVersion systemVersion; ///< No version when unknown: then what needs one is not for this system.
    QDateTime now;
    UpdateVersion skipped;      ///< What the user does not want; no version when there is none.
    bool isAskedByUser = false; ///< A check that the user asked for also finds what was skipped.
};

/// Why there is no update: of all items the one that came closest, from the farthest to the closest.
enum class NoUpdate
{
    EmptyFeed,
    OtherSystem,   ///< For another operating system or architecture.
    FromTheFuture, ///< Dated more than a day ahead.
    UpToDate,      ///< Not newer than what is installed.
    SystemTooOld,  ///< Needs a newer operating system.
    Skipped,       ///< Not newer than what the user skipped, and not critical.
};

/// The newest item that suits, or why there is none. Of items with the same version the first one counts. A
/// pure function.
[[nodiscard]] std::variant<AppcastItem, NoUpdate> chooseUpdate(const Appcast &feed,
                                                               const UpdateCircumstances &circumstances);
