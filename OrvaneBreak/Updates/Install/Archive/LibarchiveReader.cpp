// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibarchiveReader.h"

#include <archive.h>
#include <archive_entry.h>
#include <sys/stat.h>

void LibarchiveReader::Free::operator()(archive *reader) const
{
    archive_read_free(reader);
}

LibarchiveReader::LibarchiveReader(QByteArrayView bytes)
    : m_archive(archive_read_new())
{
    m_isOpen = m_archive && archive_read_support_filter_zstd(m_archive.get()) == ARCHIVE_OK &&
               archive_read_support_format_tar(m_archive.get()) == ARCHIVE_OK &&
               archive_read_open_memory(m_archive.get(), bytes.data(),
                                        static_cast<std::size_t>(bytes.size())) == ARCHIVE_OK;
}

std::variant<std::monostate, ArchiveEntry, UnpackProblem> LibarchiveReader::next()
{
    if (!m_isOpen || !isCompressedOnceWithZstd())
        return UnpackProblem::Damaged;
    archive_entry *entry = nullptr;
    const int result = archive_read_next_header(m_archive.get(), &entry);
    if (result == ARCHIVE_EOF)
        return std::monostate();
    // A warning means that a part of the entry was lost, for example its path.
    return result == ARCHIVE_OK ? converted(entry) : UnpackProblem::Damaged;
}

std::optional<std::size_t> LibarchiveReader::read(std::span<char> buffer)
{
    const la_ssize_t length = archive_read_data(m_archive.get(), buffer.data(), buffer.size());
    return length < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(length));
}

bool LibarchiveReader::isCompressedOnceWithZstd() const
{
    // The library decompresses repeatedly as long as it recognizes a format; the count includes the plain
    // data.
    return archive_filter_count(m_archive.get()) == 2 &&
           archive_filter_code(m_archive.get(), 0) == ARCHIVE_FILTER_ZSTD;
}

std::variant<std::monostate, ArchiveEntry, UnpackProblem> LibarchiveReader::converted(archive_entry *entry)
{
    constexpr mode_t specialBits = S_ISUID | S_ISGID | S_ISVTX;
    constexpr mode_t executeBits = S_IXUSR | S_IXGRP | S_IXOTH;
    const char *path = archive_entry_pathname(entry);
    if (!path)
        return UnpackProblem::Path;
    if (archive_entry_hardlink(entry))
        return UnpackProblem::Link;
    if ((archive_entry_perm(entry) & specialBits) != 0)
        return UnpackProblem::Mode;
    ArchiveEntry result;
    result.path = path;
    switch (archive_entry_filetype(entry)) {
    case AE_IFDIR:
        result.kind = ArchiveEntry::Kind::Folder;
        return result;
    case AE_IFREG:
        result.size = archive_entry_size(entry);
        result.isExecutable = (archive_entry_perm(entry) & executeBits) != 0;
        return result;
    case AE_IFLNK: {
        const char *target = archive_entry_symlink(entry);
        if (!target)
            return UnpackProblem::Link;
        result.kind = ArchiveEntry::Kind::Link;
        result.target = target;
        return result;
    }
    default:
        return UnpackProblem::Kind;
    }
}
