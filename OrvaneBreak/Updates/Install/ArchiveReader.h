// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ArchiveRules.h"

#include <QByteArrayView>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <variant>

/// Reads a tar archive compressed with zstd from memory, entry by entry. Any entry other than a file, a
/// folder or a symbolic link is a problem. Any thread, one at a time.
class ArchiveReader
{
public:
    ArchiveReader() = default;
    virtual ~ArchiveReader() = default;
    ArchiveReader(const ArchiveReader &) = delete;
    ArchiveReader &operator=(const ArchiveReader &) = delete;

    /// The next entry, monostate after the last one, or a problem, after which the reader must not be used.
    [[nodiscard]] virtual std::variant<std::monostate, ArchiveEntry, UnpackProblem> next() = 0;

    /// Reads the next bytes of the entry's content into `buffer` and returns their number, 0 at the end;
    /// absent when the archive is damaged.
    [[nodiscard]] virtual std::optional<std::size_t> read(std::span<char> buffer) = 0;
};

/// Opens any `bytes`, which outlive the reader; null when the module cannot be loaded. Any thread.
using OpenArchive = std::function<std::unique_ptr<ArchiveReader>(QByteArrayView bytes)>;
