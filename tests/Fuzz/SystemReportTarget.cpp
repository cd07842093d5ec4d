// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/ScratchFolder.h"
#include "SystemReports.h"
#include "Target.h"

#include <QTextBoundaryFinder>

using namespace Qt::StringLiterals;

namespace {

constexpr int maxCharacters = 18'000;
constexpr qsizetype maxRepeatedLength = 64;

/// The number of grapheme clusters in `text`.
int characters(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    int count = 0;
    while (finder.toNextBoundary() >= 0)
        ++count;
    return count;
}

void checkSummary(const QString &text, const SystemReport &report)
{
    const QString heading = u"Rapport système macOS"_s;
    const bool isInformative =
        report.message.contains("Exception"_L1) || report.message.contains("Termination"_L1);
    require(report.message == heading || (isInformative && text.contains(report.message)),
            "the message is an informative line of the report");
    require(!report.message.contains(u'\n'), "the message is one line");
    require(text.startsWith(report.stack), "the beginning of the report is sent");
    if (text.size() <= maxCharacters)
        require(report.stack == text, "a short report is sent whole");
    else
        require(characters(report.stack) == std::min(characters(text), maxCharacters),
                "a long report is cut at the limit");
}

} // namespace

/// The input is a system report. A short one that begins with an asterisk is also repeated beyond the limit.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const ScratchFolder folder;
    const QByteArray bytes = fuzzInput(data, size);
    ScratchFolder::writeTo(folder.path("OrvaneBreak.ips"), bytes);
    const auto found = readSystemReports(folder.path("."), FileDate::distantPast());
    require(found && found->reports.size() == (bytes.isValidUtf8() ? 1 : 0), "only a text is read");
    if (found->reports.isEmpty())
        return 0;
    ++acceptedInputs;
    const QString text = everyCharacter(bytes);
    checkSummary(text, found->reports.constFirst());
    if (text.startsWith(u'*') && text.size() <= maxRepeatedLength) {
        const QString longText = text.repeated(maxCharacters / characters(text) + 1);
        checkSummary(longText, summarizeSystemReport(longText));
    }
    return 0;
}
