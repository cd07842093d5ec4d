// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <chrono>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The file for the report of a crash. Constructed at the start of the process, so that writing allocates
/// nothing.
class ReportFile
{
public:
    /// Creates the missing folders above `path` with the mode 0700.
    explicit ReportFile(const std::filesystem::path &path);

    /// Replaces the file with `message`, a line "---" and `stack`, and creates its folders again if they have
    /// disappeared; on failure the file stays as it was. Safe in signal handlers. Works once without a free
    /// descriptor.
    void write(std::string_view message, std::string_view stack);

    /// How long the process ran that wrote the report at `path`; absent when there is no report, or when it
    /// has been read since.
    [[nodiscard]] static std::optional<std::chrono::nanoseconds> lifetime(const std::filesystem::path &path);

private:
    void createFolders() const;
    [[nodiscard]] FileDescriptor createTemporary() const;

    timespec m_start = {};
    std::string m_path;
    std::string m_temporary;
    std::vector<std::string> m_folders; ///< The outermost first.
    FileDescriptor m_reserve;
};
