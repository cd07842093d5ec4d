// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <tuple>

/// A file's date with the precision of file systems.
struct FileDate
{
    /// The beginning of the year 1, before the date of any file.
    static constexpr FileDate distantPast() { return {-62'135'596'800, 0}; }

    /// The date of `time`; the distant past outside the years 1 to 9999, which text() cannot represent.
    [[nodiscard]] static FileDate of(const timespec &time);

    /// Parses the format of text(), and any other ISO 8601 date with a time zone; absent otherwise.
    [[nodiscard]] static std::optional<FileDate> parse(const QString &text);

    /// ISO 8601 in UTC with nine decimal places, for example "2026-11-21T14:25:07.123456789Z".
    [[nodiscard]] QString text() const;

    friend bool operator==(const FileDate &, const FileDate &) = default;

    friend bool operator<(const FileDate &first, const FileDate &second)
    {
        return std::tie(first.seconds, first.nanoseconds) < std::tie(second.seconds, second.nanoseconds);
    }

    std::int64_t seconds = 0; ///< Since the beginning of 1970.
    std::int32_t nanoseconds = 0;
};
