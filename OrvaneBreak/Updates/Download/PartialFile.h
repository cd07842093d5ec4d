// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <QByteArrayView>

#include <filesystem>
#include <optional>
#include <string>

/// What has arrived of a download, in a folder of the user's alone. What lies there under its name and is no
/// file of this user's with that one name is replaced, never followed or written to. Any thread, one at a
/// time.
class PartialFile
{
public:
    /// Opens the file "<name>.part" in `folder`, or makes both, and removes every other "*.part". Absent when
    /// that cannot be: a full disk, a folder of somebody else.
    [[nodiscard]] static std::optional<PartialFile> open(const std::filesystem::path &folder,
                                                         const std::string &name);

    /// In bytes.
    [[nodiscard]] qint64 size() const;

    /// Adds `bytes` at the end; false when not all of them could be written.
    [[nodiscard]] bool append(QByteArrayView bytes) const;

    /// Drops the content; false when that failed.
    [[nodiscard]] bool clear() const;

    /// The whole content; absent when it is not exactly `length` bytes or cannot be read.
    [[nodiscard]] std::optional<QByteArray> read(qint64 length) const;

    void remove() const;

private:
    PartialFile(FileDescriptor folder, std::string name);

    [[nodiscard]] bool openFile();
    void removeOthers() const;

    FileDescriptor m_folder;
    std::string m_name;
    FileDescriptor m_file;
};
