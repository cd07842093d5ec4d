// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <filesystem>
#include <optional>

/// The beginning of a text file.
struct FileText
{
    QString text;       ///< Invalid bytes are replaced by U+FFFD.
    bool isUtf8 = true; ///< There were no invalid bytes.
};

/// The first `maxSize` bytes of the file at `path`, without a character cut in two; absent when it is not a
/// regular file or cannot be read. Never waits for another program.
[[nodiscard]] std::optional<FileText> readText(const std::filesystem::path &path, qint64 maxSize);
