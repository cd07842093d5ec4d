// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <filesystem>
#include <optional>

/// The whole text of the file at `path`; nothing when it is no regular file, cannot be read, is larger than
/// `limit` bytes or is no UTF-8 text. Never waits for another program.
[[nodiscard]] std::optional<QString> readText(const std::filesystem::path &path, qint64 limit);
