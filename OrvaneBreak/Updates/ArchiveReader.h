// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Updates/ArchiveRules.h"

#include <QByteArrayView>

#include <memory>
#include <optional>
#include <span>
#include <variant>

struct archive;
struct archive_entry;

/// Reads a tar archive packed with zstd from memory, one entry after the other. Whatever the archive has
/// besides files, folders and symbolic links is a problem. Any thread, one at a time.
class ArchiveReader
{
public:
    /// `bytes` outlives the reader; any bytes may be given.
    explicit ArchiveReader(QByteArrayView bytes);

    /// The next entry; nothing (monostate) after the last one; or what is wrong, after which the reader is of
    /// no use.
    [[nodiscard]] std::variant<std::monostate, ArchiveEntry, UnpackProblem> next();

    /// Fills `buffer` with the next bytes of the entry's content and returns how many there were, 0 at its
    /// end; absent when the archive is damaged.
    [[nodiscard]] std::optional<std::size_t> read(std::span<char> buffer);

private:
    struct Free
    {
        void operator()(archive *reader) const;
    };

    [[nodiscard]] bool isPackedOnceWithZstd() const;
    [[nodiscard]] static std::variant<std::monostate, ArchiveEntry, UnpackProblem>
    converted(archive_entry *entry);

    std::unique_ptr<archive, Free> m_archive;
    bool m_isOpen = false;
};
