// SPDX-License-Identifier: GPL-3.0-or-later
#include "SystemReports.h"

#include "TextFile.h"

#include <QTextBoundaryFinder>

#include <sys/stat.h>

#include <algorithm>
#include <string_view>
#include <system_error>

using namespace Qt::StringLiterals;

namespace {

/// In bytes. Startup waits for the scan, and what is sent is at the beginning of a report.
constexpr qint64 maxReportSize = qint64{1024} * 1024;
constexpr qsizetype maxCharacters = 18'000;

bool isReportName(std::string_view name)
{
    return (name.starts_with("OrvaneBreak") || name.starts_with("Orvane Break")) &&
           (name.ends_with(".ips") || name.ends_with(".crash"));
}

FileDate dateOf(const std::filesystem::path &path)
{
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 ? FileDate::of(status.st_mtim) : FileDate::distantPast();
}

/// Where the character number 18000 ends; the size of `text` if it has fewer.
qsizetype endOfCharacters(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (int count = 0; count < maxCharacters; ++count) {
        if (finder.toNextBoundary() < 0)
            return text.size();
    }
    return finder.position();
}

/// The first 18000 characters as a reader sees them: one may consist of several code points.
QString beginning(const QString &text)
{
    if (text.size() <= maxCharacters)
        return text;
    // The finder analyses all of its text at once, so it gets as little as possible.
    for (qsizetype length = 2 * maxCharacters; length < text.size(); length *= 4) {
        const qsizetype end = endOfCharacters(text.left(length));
        if (end < length)
            return text.left(end);
    }
    return text.left(endOfCharacters(text));
}

} // namespace

SystemReport summarizeSystemReport(const QString &text)
{
    const QList<QStringView> lines = QStringView(text).split(u'\n', Qt::SkipEmptyParts);
    const auto line = std::find_if(lines.begin(), lines.end(), [](QStringView candidate) {
        return candidate.contains("Exception"_L1) || candidate.contains("Termination"_L1);
    });
    return {line == lines.end() ? u"Rapport système macOS"_s : line->toString(), beginning(text)};
}

std::optional<SystemReports> readSystemReports(const std::filesystem::path &folder, const FileDate &lastScan)
{
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    if (error)
        return std::nullopt;
    SystemReports found{{}, lastScan};
    for (; entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::filesystem::path &path = entry->path();
        if (!isReportName(path.filename().native()))
            continue;
        const FileDate date = dateOf(path);
        if (!(lastScan < date))
            continue;
        const std::optional<FileText> file = readText(path, maxReportSize);
        if (!file || !file->isUtf8)
            continue;
        found.reports.append(summarizeSystemReport(file->text));
        found.newest = std::max(found.newest, date);
    }
    return found;
}
