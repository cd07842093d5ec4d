// SPDX-License-Identifier: GPL-3.0-or-later
#include "SmallTags.h"

#include <array>
#include <optional>

namespace {

constexpr int attributeLimit = 64;

/// The length of the tag, comment, instruction or unparsed section that `xml` begins with; absent when it
/// does not end or is a tag with too many attributes.
std::optional<qsizetype> markupLength(QByteArrayView xml)
{
    static constexpr std::array<std::array<QByteArrayView, 2>, 3> sections{
        {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}}};
    for (const auto &[begin, end] : sections) {
        if (!xml.startsWith(begin))
            continue;
        const qsizetype place = xml.indexOf(end, begin.size());
        return place < 0 ? std::nullopt : std::optional(place + end.size());
    }
    int attributes = 0;
    char quote = 0;
    for (qsizetype place = 0; place < xml.size(); ++place) {
        const char character = xml.at(place);
        if (quote != 0) {
            quote = character == quote ? '\0' : quote;
        } else if (character == '"' || character == '\'') {
            quote = character;
            if (++attributes > attributeLimit)
                return std::nullopt;
        } else if (character == '>') {
            return place + 1;
        }
    }
    return std::nullopt;
}

} // namespace

bool hasSmallTags(QByteArrayView xml)
{
    for (qsizetype start = xml.indexOf('<'); start >= 0; start = xml.indexOf('<')) {
        xml = xml.sliced(start);
        const std::optional<qsizetype> length = markupLength(xml);
        if (!length)
            return false;
        xml = xml.sliced(*length);
    }
    return true;
}
