// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/ScratchFolder.h"
#include "SystemReports.h"
#include "Target.h"

#include <QTextBoundaryFinder>

using namespace Qt::StringLiterals;

namespace {

constexpr int charactersSent = 18'000;
constexpr qsizetype longestRepeated = 64;

/// How many characters a reader sees in `text`.
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
    const bool isTelling =
        report.message.contains("Exception"_L1) || report.message.contains("Termination"_L1);
    require(report.message == heading || (isTelling && text.contains(report.message)),
            "the message is a line of the report that tells something");
    require(!report.message.contains(u'\n'), "the message is one line");
    require(text.startsWith(report.stack), "what is sent is the beginning of the report");
    if (text.size() <= charactersSent)
        require(report.stack == text, "a short report is sent whole");
    else
        require(characters(report.stack) == std::min(characters(text), charactersSent), "so much is sent");
}

} // namespace

/// The input is a report that the system wrote. One that begins with an asterisk is made long.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const ScratchFolder folder;
    const QByteArray bytes = fuzzInput(data, size);
    ScratchFolder::writeTo(folder.path("OrvaneBreak.ips"), bytes);
    const auto found = readSystemReports(folder.path("."), FileDate::distantPast());
    require(found && found->reports.size() == (bytes.isValidUtf8() ? 1 : 0),
            "a text is read, and nothing else");
    if (found->reports.isEmpty())
        return 0;
    ++acceptedInputs;
    const QString text = everyCharacter(bytes);
    checkSummary(text, found->reports.constFirst());
    if (text.startsWith(u'*') && text.size() <= longestRepeated) {
        const QString longText = text.repeated(charactersSent / characters(text) + 1);
        checkSummary(longText, summarizeSystemReport(longText));
    }
    return 0;
}
