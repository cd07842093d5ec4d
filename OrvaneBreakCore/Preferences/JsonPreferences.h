// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileWatch.h"
#include "Preferences.h"
#include "PreferencesFile.h"

#include <QMap>
#include <QTimer>

#include <chrono>
#include <filesystem>

/// Preferences in a file that people can read and edit: one indented JSON object with a member for each key.
/// Members of other programs keep their exact text and their place. Values are read from memory; a change
/// that another program makes to the file takes effect at the next read, without any wake-up. Each change is
/// on the disk when setValue() returns.
///
/// A file that is not a JSON object, or is larger than `maxPreferencesSize`, is renamed to
/// "preferences.damaged-<UTC date and time>.json" when the program starts, and a line in the log says so. If
/// it is damaged or emptied later, the last good values stay in effect, and the next change writes them with
/// it; a damaged file is then renamed. A file that cannot be read is never replaced.
class JsonPreferences final : public Preferences
{
public:
    /// Reads `file`. The first change creates it and its folder. A change that cannot be written is tried
    /// again after each `retryInterval`, for which the thread needs an event loop.
    explicit JsonPreferences(const std::filesystem::path &file,
                             std::chrono::milliseconds retryInterval = std::chrono::minutes(1));

    /// Tries to write what could not be written yet.
    ~JsonPreferences() override;

    /// OrvaneBreak/preferences.json in the user's folder for configuration.
    [[nodiscard]] static std::filesystem::path defaultFile();

    [[nodiscard]] QJsonValue value(const QString &key) const override;

    /// Writes nothing when the file already holds `value`. A value that cannot be written takes effect
    /// anyway, whatever the file holds, and is written later; one that would make the file too large is held
    /// back alone. Waits at most half a second for another process that is changing the file.
    void setValue(const QString &key, const QJsonValue &value) override;

private:
    void putDamagedAside();
    void refresh() const;
    [[nodiscard]] PreferencesContent::State load() const;
    void store();
    [[nodiscard]] bool write();

    std::filesystem::path m_file;
    mutable FileWatch m_watch;
    mutable PreferencesMembers m_stored;
    mutable bool m_isStale = false;
    QMap<QString, QJsonValue> m_unwritten;
    QTimer m_retry;
};
