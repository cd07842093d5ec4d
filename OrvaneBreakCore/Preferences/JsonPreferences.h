// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileWatch.h"
#include "Preferences.h"

#include <QHash>
#include <QJsonObject>

#include <filesystem>

/// Preferences in a file that a person can read and edit: one indented JSON object, a member for each key.
/// Members that the program does not know stay. Values are read from memory; a change made to the file by
/// another program is in force from the next read on, without any wake-up. Each change is on the disk when
/// setValue() returns.
///
/// A file that holds no JSON object, or is larger than a mebibyte, is put aside as "preferences.damaged-<UTC
/// date and time>.json" when the program starts. Damaged later, it stays until the next change is written,
/// and the last good values stay in force. A file that cannot be read is never replaced.
class JsonPreferences final : public Preferences
{
public:
    /// Reads `file`; it and its folder are created at the first change.
    explicit JsonPreferences(const std::filesystem::path &file);

    /// OrvaneBreak/preferences.json in the user's folder for configuration.
    [[nodiscard]] static std::filesystem::path defaultFile();

    [[nodiscard]] QJsonValue value(const QString &key) const override;

    /// Nothing is written when the file holds `value` already. A value that cannot be written is written
    /// together with the next one that can; until then it is in force whatever the file says. Waits half a
    /// second at most for another process that is changing the file.
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
