// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <QByteArrayView>

#include <filesystem>
#include <optional>
#include <string>

/// The received part of a download, in a folder that only the user can access. Under its name, anything but a
/// regular file of this user with a single hard link is replaced, and never followed or written to. Any
/// thread, one at a time.
class PartialFile
{
public:
    /// Opens "<name>.part" in `folder`, creating both if necessary, and removes every other "*.part". Absent
    /// on failure, for example when another process has it open, the disk is full or the folder belongs to
    /// somebody else.
    [[nodiscard]] static std::optional<PartialFile> open(const std::filesystem::path &folder,
                                                         const std::string &name);

    /// In bytes.
    [[nodiscard]] qint64 size() const;

    /// Returns false when not all of `bytes` could be written.
    [[nodiscard]] bool append(QByteArrayView bytes) const;

    /// Truncates the file to 0 bytes; false on failure.
    [[nodiscard]] bool clear() const;

    /// The whole content; absent when it is not exactly `length` bytes long or cannot be read.
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
