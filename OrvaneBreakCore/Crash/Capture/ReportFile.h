// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <filesystem>
#include <string>
#include <string_view>

/// The file for the report of a crash. Constructed before any crash, so that writing allocates nothing.
class ReportFile
{
public:
    /// Creates the folder of `path` with the mode 0700, unless it exists.
    explicit ReportFile(const std::filesystem::path &path);

    /// Replaces the file with `message`, a line "---" and `stack`; on failure the file stays as it was. Safe
    /// in signal handlers. Works once without a free descriptor.
    void write(std::string_view message, std::string_view stack);

private:
    std::string m_path;
    std::string m_temporary;
    FileDescriptor m_reserve;
};
