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
    QString message; ///< The first line that tells of an exception or a termination.
    QString stack;   ///< The beginning of the report.
};

/// What a look into the folder of the system's reports brought.
struct SystemReports
{
    QList<SystemReport> reports;
    FileDate newest; ///< The latest date among them, or the one given when there are none.
};

/// Reads the reports in `folder` that are later than `lastScan`: files, also linked ones, whose names begin
/// with "OrvaneBreak" or "Orvane Break" and end with ".ips" or ".crash". No other file is opened. A file that
/// cannot be read, is no UTF-8 text or is larger than 16 MiB is left out. Nothing when the folder cannot be
/// listed.
[[nodiscard]] std::optional<SystemReports> readSystemReports(const std::filesystem::path &folder,
                                                             const FileDate &lastScan);

/// What is sent of a report's whole text.
[[nodiscard]] SystemReport summarizeSystemReport(const QString &text);
