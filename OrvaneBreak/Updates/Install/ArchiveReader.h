// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ArchiveRules.h"

#include <QByteArrayView>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <variant>

/// Reads a tar archive packed with zstd from memory, one entry after the other. Whatever the archive has
/// besides files, folders and symbolic links is a problem. Any thread, one at a time.
class ArchiveReader
{
public:
    ArchiveReader() = default;
    virtual ~ArchiveReader() = default;
    ArchiveReader(const ArchiveReader &) = delete;
    ArchiveReader &operator=(const ArchiveReader &) = delete;

    /// The next entry; nothing (monostate) after the last one; or what is wrong, after which the reader is of
    /// no use.
    [[nodiscard]] virtual std::variant<std::monostate, ArchiveEntry, UnpackProblem> next() = 0;

    /// Fills `buffer` with the next bytes of the entry's content and returns how many there were, 0 at its
    /// end; absent when the archive is damaged.
    [[nodiscard]] virtual std::optional<std::size_t> read(std::span<char> buffer) = 0;
};

/// Makes a reader of any `bytes`, which outlive it; null when this machine cannot read archives now. Any
/// thread.
using OpenArchive = std::function<std::unique_ptr<ArchiveReader>(QByteArrayView bytes)>;
