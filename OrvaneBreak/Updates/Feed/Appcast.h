// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdateVersion.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUrl>

#include <optional>
#include <vector>

/// One archive that the feed offers. Nothing in it can be trusted before the archive's signature is verified.
struct AppcastItem
{
    UpdateVersion version;              ///< For comparisons, and what the archive must contain; always valid.
    QString displayVersion;             ///< For the user, at most 200 characters; `version` by default.
    QDateTime date;                     ///< Invalid when missing.
    QString releaseNotes;               ///< Plain text, at most 20,000 characters; may be empty.
    QString operatingSystem;            ///< For example "linux"; empty when missing.
    QString architecture;               ///< For example "x86_64"; empty when missing.
    UpdateVersion minimumSystemVersion; ///< No version when the feed sets no valid minimum.
    bool isCritical = false;
    bool needsUnknownSystem = false; ///< The feed sets a minimum that is not a version.
    QUrl archive;
    qint64 length = 0;    ///< Of the archive in bytes; from 1 to 1 GiB.
    QByteArray signature; ///< Of the whole archive; 64 bytes.
};

/// The usable items of a feed, in its order.
struct Appcast
{
    std::vector<AppcastItem> items;
    QDateTime date; ///< When the feed was last built, or else published; invalid when missing.
};

/// Whether the program may talk to an address.
using AddressRule = bool (*)(const QUrl &);

/// Reads an RSS 2.0 feed from any bytes. Absent when they are not RSS, not well-formed, declare a document
/// type, or exceed 1 MiB, 32 levels or 1,000 items. A property of an item is an element or an attribute of
/// its enclosure, and the attribute takes precedence; each enclosure is one archive. An archive without a
/// valid version, length, signature and address that `isAllowed` is left out. A missing architecture is taken
/// from the file name: "...-linux-<architecture>.tar.zst". A pure function.
[[nodiscard]] std::optional<Appcast> parseAppcast(const QByteArray &bytes, AddressRule isAllowed);
