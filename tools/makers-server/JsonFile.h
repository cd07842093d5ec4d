// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonDocument>
#include <QString>

/// The content of a JSON file; null when there is no such file. Throws std::runtime_error when it cannot be
/// read or is not JSON.
[[nodiscard]] QJsonDocument readJsonFile(const QString &path);

/// Replaces the file as a whole: a reader sees the old content or the new. Throws std::runtime_error when it
/// cannot be written.
void writeJsonFile(const QString &path, const QJsonDocument &content);
