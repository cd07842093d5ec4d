// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "InstallationChange.h"
#include "LibarchiveReader.h"
#include "Support/ArchiveMaker.h"
#include "Support/ScratchFolder.h"
#include "UnpackedUpdate.h"

#include <QTest>

/// An installation of version 1.2 in a folder with a space and an accent in its name.
class InstallationFixture
{
public:
    InstallationFixture()
    {
        std::filesystem::create_directories(m_root / "versions");
        put("1.2");
        std::filesystem::create_directory_symlink("versions/1.2", m_root / "current");
    }

    [[nodiscard]] const std::filesystem::path &root() const { return m_root; }

    /// The installation as a program of `version` sees it.
    [[nodiscard]] Installation seenBy(const char *version) const
    {
        return {m_root, UpdateVersion(QString::fromLatin1(version))};
    }

    /// Adds a complete version.
    void put(const std::string &version) const
    {
        const std::filesystem::path staging = m_root / "versions" / "put";
        const auto result = unpackArchive(LibarchiveReader(ArchiveMaker::packedUpdate(version)), staging);
        if (!std::holds_alternative<UnpackedUpdate>(result))
            qFatal("cannot unpack a version for the test");
        std::filesystem::rename(staging / ("OrvaneBreak-" + version), m_root / "versions" / version);
        std::filesystem::remove(staging);
    }

    /// The root and its parents in the scratch folder.
    [[nodiscard]] std::vector<std::filesystem::path> ownFolders() const
    {
        return {m_root, m_root.parent_path(), m_root.parent_path().parent_path()};
    }

    /// The sorted entries of the root and of the folder of the versions.
    [[nodiscard]] QStringList names() const { return namesIn(m_root); }
    [[nodiscard]] QStringList versions() const { return namesIn(m_root / "versions"); }

    /// Whether the version consists of exactly its files, with their content.
    [[nodiscard]] bool isComplete(const std::string &version) const
    {
        const std::filesystem::path folder = m_root / "versions" / version;
        std::size_t expected = 0;
        for (const ArchiveMaker::Entry &entry : ArchiveMaker::update(version)) {
            const std::string path = entry.path.substr(entry.path.find('/') + 1);
            const bool isFile = entry.type == AE_IFREG;
            if (isFile && ScratchFolder::bytesOf(folder / path) != entry.content)
                return false;
            expected += isFile ? 1 : 0;
        }
        std::size_t found = 0;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(folder))
            found += entry.is_regular_file() && !entry.is_symlink() ? 1 : 0;
        return found == expected;
    }

private:
    [[nodiscard]] static QStringList namesIn(const std::filesystem::path &folder)
    {
        return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot,
                                      QDir::Name);
    }

    ScratchFolder m_scratch;
    std::filesystem::path m_root = m_scratch.path("my d\u00e9j\u00e0 vu") / "OrvaneBreak";
};
