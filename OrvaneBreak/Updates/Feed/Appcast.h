// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Ed25519.h"
#include "UpdateVersion.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>
#include <stop_token>
#include <vector>

/// One archive that the feed offers. Nothing in it can be trusted before the archive's signature is verified.
struct AppcastItem
{
    UpdateVersion version;   ///< For comparisons, and what the archive must contain; always valid.
    QString displayVersion;  ///< For the user, at most 200 characters; `version` by default.
    QDateTime date;          ///< Invalid when missing.
    QString releaseNotes;    ///< Plain text, at most 20,000 characters, or only a link; may be empty.
    QString operatingSystem; ///< For example "linux"; empty when missing.
    QString architecture;    ///< For example "x86_64"; empty when missing.
    UpdateVersion minimumSystemVersion; ///< Of the C library. No version when the feed sets no valid minimum.
    UpdateVersion maximumSystemVersion; ///< Likewise.
    std::chrono::seconds rolloutInterval{0}; ///< Time between two groups of users who get it on their own.
    bool isCritical = false;
    bool isRestricted = false; ///< The feed sets a condition that this program does not know or understand.
    QUrl archive;
    qint64 length = 0;                         ///< Of the archive in bytes; from 1 to 1 GiB.
    QByteArray signature;                      ///< Of the whole archive; 64 bytes.
    std::vector<Ed25519::PublicKey> laterKeys; ///< Of the makers, besides the one of the running program.
};

/// The usable items of a feed, in its order.
struct Appcast
{
    std::vector<AppcastItem> items;
    UpdateVersion newestUnusable; ///< The newest version for Linux that was left out; may be no version.
    qint64 serial = 0;            ///< Grows with every change of the feed; 0 when missing.
    QDateTime expires;            ///< Invalid when missing.
};

/// When to give up reading.
struct ReadingLimits
{
    std::stop_token stop;
    std::chrono::milliseconds time{5'000};
};

/// Whether the program may talk to an address.
using AddressRule = bool (*)(const QUrl &);

/// Reads an RSS 2.0 feed from any bytes. Absent when they are not RSS in UTF-8, not well-formed, declare a
/// document type, take longer than the limits allow, or exceed 1 MiB, 32 levels, 1,000 items, 32 enclosures
/// of an item or 64 attributes of an element. A property of an item is an element or an attribute of its
/// enclosure, and the attribute takes precedence; each enclosure is one archive. An archive without a valid
/// version, length, signature and address that `isAllowed` is left out. A missing architecture is taken from
/// the file name: "...-linux-<architecture>.tar.zst". Verifies nothing; any thread.
[[nodiscard]] std::optional<Appcast> parseAppcast(const QByteArray &bytes, AddressRule isAllowed,
                                                  const ReadingLimits &limits = {});
