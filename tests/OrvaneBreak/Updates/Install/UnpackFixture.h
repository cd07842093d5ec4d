// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LibarchiveReader.h"
#include "Support/ArchiveMaker.h"
#include "Support/ScratchFolder.h"
#include "UnpackedUpdate.h"

#include <QTest>

/// Updates of version 1.3, valid and invalid.
namespace UnpackFixture {

using namespace ArchiveMaker;

inline constexpr auto top = "OrvaneBreak-1.3";

/// A folder to unpack into, next to a file that must not change.
struct Place
{
    ScratchFolder scratch;
    std::filesystem::path folder = scratch.path("unpacked");

    Place() { scratch.writeTo(scratch.path("neighbour"), "untouched"); }

    [[nodiscard]] bool isUntouched() const
    {
        return scratch.names() == QStringList{QStringLiteral("neighbour")} &&
               ScratchFolder::bytesOf(scratch.path("neighbour")) == "untouched";
    }

    [[nodiscard]] unsigned mode(const std::string &path) const
    {
        return ScratchFolder::status(folder / top / path).st_mode & 07777U;
    }
};

inline std::vector<Entry> updateWith(const std::vector<Entry> &more)
{
    std::vector<Entry> entries = update("1.3");
    entries.insert(entries.end(), more.begin(), more.end());
    return entries;
}

inline std::string in(const std::string &path)
{
    return std::string(top) + '/' + path;
}

inline void refuse(const QByteArray &archive, UnpackProblem expected, const UnpackLimits &limits = {})
{
    const Place place;
    const auto result = unpackArchive(LibarchiveReader(archive), place.folder, limits);
    const auto *failure = std::get_if<UnpackFailure>(&result);
    QVERIFY(failure);
    QCOMPARE(static_cast<int>(failure->problem), static_cast<int>(expected));
    QVERIFY(place.isUntouched());
}

inline void accept(const QByteArray &archive, const UnpackLimits &limits = {})
{
    const Place place;
    const auto result = unpackArchive(LibarchiveReader(archive), place.folder, limits);
    const auto *failure = std::get_if<UnpackFailure>(&result);
    QVERIFY2(!failure, qPrintable(failure ? failure->detail : QString()));
}

} // namespace UnpackFixture
