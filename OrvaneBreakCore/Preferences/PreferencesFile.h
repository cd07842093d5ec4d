// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"
#include "PreferencesMembers.h"

#include <QByteArray>

#include <filesystem>
#include <string>

/// The largest file in bytes. A conversation of 50 messages as long as any answer of the server leaves room.
inline constexpr qsizetype maxPreferencesSize = 67'108'864;

/// The result of reading the preferences file.
struct PreferencesContent
{
    enum class State
    {
        /// One JSON object: `members`.
        Values,
        NoFile,
        /// Not a single byte, as while another program writes the file anew.
        Empty,
        /// Not one JSON object, or larger than `maxPreferencesSize`.
        Damaged,
        /// Not a regular file, no permission, or a disk error: the content is unknown.
        Unreadable,
    };

    State state = State::Unreadable;
    PreferencesMembers members;
};

/// Parses the bytes of a preferences file; never Unreadable. A text that is the one of `known` is not parsed.
[[nodiscard]] PreferencesContent parsePreferences(const QByteArray &json,
                                                  const PreferencesMembers &known = {});

/// Reads `file`. Never blocks, whatever kind of file it is.
[[nodiscard]] PreferencesContent readPreferences(const std::filesystem::path &file);

/// Exclusive access to the preferences file for one change: locks the folder, for processes that use this
/// class, until destruction. The constructor waits at most half a second for another process, then continues
/// without the lock. Follows symbolic links in place of the file.
class PreferencesFile
{
public:
    enum class Old
    {
        Dropped,
        PutAside
    };

    explicit PreferencesFile(const std::filesystem::path &file);

    /// Reads the file like `readPreferences()`, parsed like `parsePreferences()`.
    [[nodiscard]] PreferencesContent read(const PreferencesMembers &known = {}) const;

    /// Renames the file to "<name>.damaged-<UTC date and time>.json", with a number appended if that name is
    /// taken, and logs the new name. Returns false on failure.
    bool moveAside();

    /// Replaces the file with one that has the content `json` and the mode 0600: at any moment, even after a
    /// crash, the path leads to the whole old file or the whole new one. Old::PutAside also keeps the old
    /// file under a name as in moveAside(). Returns false on failure; the old file is then kept.
    bool replace(const QByteArray &json, Old old);

    /// The name of the last new file before it replaced the old one.
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
