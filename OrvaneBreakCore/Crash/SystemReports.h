// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDate.h"

#include <QList>
#include <QString>

#include <filesystem>
#include <optional>

/// One report that the system wrote about a crash of this application.
struct SystemReport
{
    QString message; ///< The first line about an exception or a termination.
    QString stack;   ///< The beginning of the report.
};

/// The result of a scan of the system's reports.
struct SystemReports
{
    QList<SystemReport> reports;
    FileDate newest; ///< The latest of their dates; without reports, the date of the last scan.
};

/// Reads the reports in `folder` that are later than `lastScan`: files and links to files whose names begin
/// with "OrvaneBreak" or "Orvane Break" and end with ".ips" or ".crash". Opens no other file. Reads
/// at most the first mebibyte of each; skips files that cannot be read or are not UTF-8. Absent when the
/// folder cannot be listed.
[[nodiscard]] std::optional<SystemReports> readSystemReports(const std::filesystem::path &folder,
                                                             const FileDate &lastScan);

/// The parts of the report `text` that are sent.
[[nodiscard]] SystemReport summarizeSystemReport(const QString &text);
