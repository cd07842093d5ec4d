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

constexpr qint64 maxReportSize = qint64{16} * 1024 * 1024;
constexpr int maxCharacters = 18'000;

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

/// The first 18000 characters as a reader sees them: one may consist of several code points.
QString beginning(const QString &text)
{
    if (text.size() <= maxCharacters)
        return text;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (int count = 0; count < maxCharacters; ++count) {
        if (finder.toNextBoundary() < 0)
            return text;
    }
    return text.left(finder.position());
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
        const std::optional<QString> text = readText(path, maxReportSize);
        if (!text)
            continue;
        found.reports.append(summarizeSystemReport(*text));
        found.newest = std::max(found.newest, date);
    }
    return found;
}
