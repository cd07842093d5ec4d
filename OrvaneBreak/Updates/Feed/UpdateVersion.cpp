// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateVersion.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype lengthLimit = 64;

std::strong_ordering ordering(int comparison)
{
    return comparison <=> 0;
}

QStringView withoutLeadingZeros(QStringView digits)
{
    while (digits.size() > 1 && digits.startsWith(u'0'))
        digits = digits.sliced(1);
    return digits;
}

std::strong_ordering compareNumbers(const QString &first, const QString &second)
{
    const QStringView a = withoutLeadingZeros(first);
    const QStringView b = withoutLeadingZeros(second);
    return a.size() == b.size() ? ordering(a.compare(b)) : a.size() <=> b.size();
}

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

bool isNumber(const QString &text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), isDigit);
}

bool isIdentifier(const QString &text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar character) {
        return isDigit(character) || (character >= u'a' && character <= u'z') ||
               (character >= u'A' && character <= u'Z') || character == u'-';
    });
}

std::strong_ordering compareIdentifiers(const QString &first, const QString &second)
{
    if (isNumber(first) && isNumber(second))
        return compareNumbers(first, second);
    if (isNumber(first) != isNumber(second))
        return isNumber(first) ? std::strong_ordering::less : std::strong_ordering::greater;
    return ordering(first.compare(second));
}

std::strong_ordering comparePreReleases(const QStringList &first, const QStringList &second)
{
    if (first.isEmpty() || second.isEmpty())
        return second.size() <=> first.size();
    for (qsizetype index = 0; index < std::min(first.size(), second.size()); ++index) {
        const auto result = compareIdentifiers(first.at(index), second.at(index));
        if (std::is_neq(result))
            return result;
    }
    return first.size() <=> second.size();
}

} // namespace

UpdateVersion::UpdateVersion(const QString &text)
{
    if (text.size() > lengthLimit)
        return;
    // Parsed by hand: every start parses a version, and a regular expression would cost 0.5 MB of memory.
    const qsizetype hyphen = text.indexOf(u'-');
    const QStringList numbers = text.first(hyphen < 0 ? text.size() : hyphen).split(u'.');
    const QStringList preRelease = hyphen < 0 ? QStringList() : text.sliced(hyphen + 1).split(u'.');
    if (!std::all_of(numbers.begin(), numbers.end(), isNumber) ||
        !std::all_of(preRelease.begin(), preRelease.end(), isIdentifier))
        return;
    m_text = text;
    m_numbers = numbers;
    m_preRelease = preRelease;
}

std::partial_ordering UpdateVersion::operator<=>(const UpdateVersion &other) const
{
    if (!isValid() || !other.isValid())
        return std::partial_ordering::unordered;
    for (qsizetype index = 0; index < std::max(m_numbers.size(), other.m_numbers.size()); ++index) {
        const auto result =
            compareNumbers(m_numbers.value(index, u"0"_s), other.m_numbers.value(index, u"0"_s));
        if (std::is_neq(result))
            return result;
    }
    return comparePreReleases(m_preRelease, other.m_preRelease);
}
