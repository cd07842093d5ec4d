// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdateVersion.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUrl>

#include <variant>
#include <vector>

/// One archive that the feed offers. All of it is what the feed says: nothing is proven before the archive's
/// signature is.
struct AppcastItem
{
    UpdateVersion version;  ///< What is compared, and what the archive must contain; always valid.
    QString displayVersion; ///< What the user reads; the same text when the feed says nothing else.
    QDateTime date;                     ///< Invalid when the feed does not tell.
    QString releaseNotes;               ///< Plain text, at most 20,000 characters; may be empty.
    QString operatingSystem;            ///< For example "linux"; empty when the feed does not tell.
    QString architecture;               ///< For example "x86_64"; empty when the feed does not tell.
    UpdateVersion minimumSystemVersion; ///< No version when every system will do.
    bool isCritical = false;
    bool needsUnknownSystem = false; ///< A minimum is given that is no version.
    QUrl archive;
    qint64 length = 0;    ///< Of the archive in bytes; from 1 to 1 GiB.
    QByteArray signature; ///< Of the whole archive; 64 bytes.
};

/// A feed with what is usable in it, in its order.
struct Appcast
{
    std::vector<AppcastItem> items;
    QDateTime date; ///< When it was last built, or else published; invalid when it does not tell.
};

/// Why a feed is not read at all.
enum class AppcastRefusal
{
    TooLarge,      ///< Over a mebibyte.
    NotWellFormed, ///< No XML, or cut off.
    DocumentType,  ///< Declares a document type, and with it perhaps entities.
    TooDeep,       ///< Over 32 elements within each other.
    TooManyItems,  ///< Over 1,000.
    NoFeed,        ///< XML of another kind than RSS.
};

/// Whether the program may talk to an address.
using AddressRule = bool (*)(const QUrl &);

/// Reads an RSS 2.0 feed. A pure function; any bytes may be given. What an item says of itself is said by an
/// element or, winning over that, by an attribute of its enclosure; several enclosures are several archives.
/// An archive without a version, an address that `isAllowed`, a length or a signature in their forms is left
/// out. An archive whose architecture is not told is of that in its name: "...-linux-<architecture>.tar.zst".
[[nodiscard]] std::variant<Appcast, AppcastRefusal> parseAppcast(const QByteArray &bytes,
                                                                 AddressRule isAllowed);
