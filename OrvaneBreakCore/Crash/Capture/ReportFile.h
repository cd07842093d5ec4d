// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <filesystem>
#include <string>
#include <string_view>

/// Where a dying process leaves its report. Made in good time; all that is needed later is at hand then.
class ReportFile
{
public:
    /// Creates the folder of `path`, readable by its owner alone, unless it is there.
    explicit ReportFile(const std::filesystem::path &path);

    /// Replaces the file by `message`, a line "---" and `stack`. What cannot be written whole leaves the file
    /// as it was. Safe in a signal handler, also with no descriptor left; the second call may lack one then.
    void write(std::string_view message, std::string_view stack);

private:
    std::string m_path;
    std::string m_temporary;
    FileDescriptor m_reserve;
};
