// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <filesystem>
#include <optional>

/// The text of the file at `path`; absent when it is not a regular file, cannot be read, is larger than
/// `maxSize` bytes or is not UTF-8. Never waits for another program.
[[nodiscard]] std::optional<QString> readText(const std::filesystem::path &path, qint64 maxSize);
