// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <QByteArray>
#include <QJsonObject>

#include <filesystem>
#include <string>

/// What a look at the preferences file found.
struct PreferencesContent
{
    enum class State
    {
        /// One JSON object: `values`.
        Values,
        /// No file, or one of no bytes.
        NoFile,
        /// Something else than one JSON object, or more than a mebibyte of it.
        Damaged,
        /// Not a regular file, no permission, or a failing disk: nothing is known about its content.
        Unreadable,
    };

    State state = State::Unreadable;
    QJsonObject values;
};

/// What the bytes of a preferences file hold; never Unreadable.
[[nodiscard]] PreferencesContent parsePreferences(const QByteArray &json);

/// Reads the file at `file`. Waits for nobody, whatever lies there.
[[nodiscard]] PreferencesContent readPreferences(const std::filesystem::path &file);

/// Exclusive access to the preferences file for one change: the folder is locked among processes that use
/// this class, from the construction on until the destruction. The construction waits half a second at most
/// for another process, then goes on without the lock. Symbolic links in place of the file are followed.
class PreferencesFile
{
public:
    enum class Old
    {
        Dropped,
        PutAside
    };

    explicit PreferencesFile(const std::filesystem::path &file);

    [[nodiscard]] PreferencesContent read() const;

    /// Renames the file to "<name>.damaged-<UTC date and time>.json" beside it, with a number appended if
    /// need be, so that nothing is overwritten. Returns whether that succeeded.
    bool moveAside();

    /// Replaces the file by one with the content `json` and the mode 0600: at any moment, even after a crash,
    /// the path leads to the whole old file or to the whole new one. Old::PutAside also keeps the old file
    /// under a name as in moveAside(). Returns false, with the old file in place, when that failed.
    bool replace(const QByteArray &json, Old old);

    /// The name that the content last replaced bore before.
    [[nodiscard]] const std::string &temporaryName() const { return m_temporaryName; }

private:
    [[nodiscard]] bool fillTemporary(const QByteArray &json) const;
    [[nodiscard]] bool renameTemporary(Old old);
    [[nodiscard]] bool linkAside();
    void removeAbandoned();

    std::filesystem::path m_folderPath;
    std::string m_name;
    std::string m_temporaryName;
    FileDescriptor m_folder;
    bool m_isLocked = false;
};
