// SPDX-License-Identifier: GPL-3.0-or-later
#include "CrashText.h"

#include <algorithm>

CrashText &CrashText::append(std::string_view text)
{
    const std::size_t length = std::min(text.size(), m_characters.size() - m_length);
    std::copy_n(text.data(), length, m_characters.data() + m_length);
    m_length += length;
    return *this;
}

CrashText &CrashText::appendDecimal(std::uint64_t number)
{
    return appendDigits(number, 10);
}

CrashText &CrashText::appendHexadecimal(std::uint64_t number)
{
    return append("0x").appendDigits(number, 16);
}

CrashText &CrashText::appendBytes(std::span<const unsigned char> bytes)
{
    for (const unsigned char byte : bytes)
        appendDigits(byte / 16U, 16).appendDigits(byte % 16U, 16);
    return *this;
}

CrashText &CrashText::appendDigits(std::uint64_t number, unsigned base)
{
    constexpr std::size_t maxDigits = 20;
    std::array<char, maxDigits> digits = {};
    std::size_t first = maxDigits;
    do {
        digits[--first] = "0123456789abcdef"[number % base];
        number /= base;
    } while (number > 0);
    return append({digits.data() + first, maxDigits - first});
}
