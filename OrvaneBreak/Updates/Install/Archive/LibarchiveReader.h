// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ArchiveReader.h"

struct archive;
struct archive_entry;

/// Reads archives with libarchive.
class LibarchiveReader final : public ArchiveReader
{
public:
    /// Any bytes may be given; they outlive the reader.
    explicit LibarchiveReader(QByteArrayView bytes);

    [[nodiscard]] std::variant<std::monostate, ArchiveEntry, UnpackProblem> next() override;
    [[nodiscard]] std::optional<std::size_t> read(std::span<char> buffer) override;

private:
    struct Free
    {
        void operator()(archive *reader) const;
    };

    [[nodiscard]] bool isCompressedOnceWithZstd() const;
    [[nodiscard]] static std::variant<std::monostate, ArchiveEntry, UnpackProblem>
    converted(archive_entry *entry);

    std::unique_ptr<archive, Free> m_archive;
    bool m_isOpen = false;
};
