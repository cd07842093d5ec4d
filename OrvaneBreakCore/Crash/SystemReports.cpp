// SPDX-License-Identifier: GPL-3.0-or-later
#include "Crash/SystemReports.h"

#include "Platform/Preferences/FileDescriptor.h"

#include <QFile>
#include <QStringDecoder>
#include <QTextBoundaryFinder>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <string_view>
#include <system_error>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestReport = qint64{16} * 1024 * 1024;
constexpr int charactersSent = 18'000;

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

/// The text up to its 18000th character as a reader sees them: one may consist of several code points.
QString beginning(const QString &text)
{
    if (text.size() <= charactersSent)
        return text;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (int count = 0; count < charactersSent; ++count) {
        if (finder.toNextBoundary() < 0)
            return text;
    }
    return text.left(finder.position());
}

} // namespace

std::optional<QString> readText(const std::filesystem::path &path, qint64 limit)
{
    // Without O_NONBLOCK a pipe would be waited for.
    const FileDescriptor descriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!descriptor.isOpen() || fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    QFile file;
    if (!file.open(descriptor.get(), QIODevice::ReadOnly))
        return std::nullopt;
    // Memory for as much as there is: the limit is far above that.
    const QByteArray bytes = file.read(std::min(limit, qint64{status.st_size}) + 1);
    if (bytes.size() > limit || file.error() != QFileDevice::NoError)
        return std::nullopt;
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

SystemReport summarizeSystemReport(const QString &text)
{
    const QList<QStringView> lines = QStringView(text).split(u'\n', Qt::SkipEmptyParts);
    const auto telling = std::find_if(lines.begin(), lines.end(), [](QStringView line) {
        return line.contains("Exception"_L1) || line.contains("Termination"_L1);
    });
    return {telling == lines.end() ? u"Rapport système macOS"_s : telling->toString(), beginning(text)};
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
        const std::optional<QString> text = readText(path, largestReport);
        if (!text)
            continue;
        found.reports.append(summarizeSystemReport(*text));
        found.newest = std::max(found.newest, date);
    }
    return found;
}
