// SPDX-License-Identifier: GPL-3.0-or-later
#include "CoreDumps.h"
#include "Target.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace {

bool isPlain(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0;
}

bool isPartOfWord(char character)
{
    return character < 0 || isPlain(character) || character == '_';
}

bool containsWord(const std::string &text, const std::string &word)
{
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        const std::size_t end = at + word.size();
        if ((at == 0 || !isPartOfWord(text[at - 1])) && (end == text.size() || !isPartOfWord(text[end])))
            return true;
    }
    return false;
}

} // namespace

/// The input is the login name, the signal's name and the journal's description, with zero bytes between
/// them.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QList<QByteArray> fields = fuzzInput(data, size).split('\0');
    const std::string login = fields.first().toStdString();
    CoreDump dump;
    dump.date = {1'700'000'000, 0};
    dump.signal = 11;
    dump.signalName = QString::fromUtf8(fields.value(1));
    dump.description = QString::fromUtf8(fields.value(2));
    const QString text = coreDumpReport(dump, "/home/" + login + "/bin/orvanebreak", "/home/" + login, login);
    if (login.empty() || !std::ranges::all_of(login, isPlain))
        return 0;
    require(!containsWord(text.toStdString(), login), "the report does not contain the login name");
    ++acceptedInputs;
    require(text.endsWith(u'\n') && text.contains(QStringLiteral("~")), "the rest of the report is complete");
    return 0;
}
