// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileWatch.h"
#include "Preferences.h"

#include <QHash>
#include <QJsonObject>

#include <filesystem>

/// Preferences in a file that people can read and edit: one indented JSON object with a member for each key.
/// Unknown members stay. Values are read from memory; a change that another program makes to the file takes
/// effect at the next read, without any wake-up. Each change is on the disk when setValue() returns.
///
/// A file that is not a JSON object, or is larger than a mebibyte, is renamed to "preferences.damaged-<UTC
/// date and time>.json" when the program starts. If it is damaged later, the last good values stay in effect,
/// and it is renamed when the next change is written. A file that cannot be read is never replaced.
class JsonPreferences final : public Preferences
{
public:
    /// Reads `file`. The first change creates it and its folder.
    explicit JsonPreferences(const std::filesystem::path &file);

    /// OrvaneBreak/preferences.json in the user's folder for configuration.
    [[nodiscard]] static std::filesystem::path defaultFile();

    [[nodiscard]] QJsonValue value(const QString &key) const override;

    /// Writes nothing when the file already holds `value`. A value that cannot be written takes effect
    /// anyway, whatever the file holds, and is written together with a later change. Waits at most half a
    /// second for another process that is changing the file.
    void setValue(const QString &key, const QJsonValue &value) override;

private:
    void putDamagedAside();
    void refresh() const;
    void write();

    std::filesystem::path m_file;
    mutable FileWatch m_watch;
    mutable QJsonObject m_stored;
    mutable bool m_isStale = false;
    QHash<QString, QJsonValue> m_unwritten;
};
