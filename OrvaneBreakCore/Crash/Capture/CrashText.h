// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// A text of limited length, composed without allocation; what does not fit is dropped. Safe in signal
/// handlers.
class CrashText
{
public:
    CrashText &append(std::string_view text);
    CrashText &appendDecimal(std::uint64_t number);
    CrashText &appendHexadecimal(std::uint64_t number); ///< With "0x" in front.

    CrashText &appendBytes(std::span<const unsigned char> bytes); ///< Two hexadecimal digits each.

    void clear() { m_length = 0; }
    [[nodiscard]] std::string_view view() const { return {m_characters.data(), m_length}; }

private:
    CrashText &appendDigits(std::uint64_t number, unsigned base);

    // Thirty frames with function names of the maximum length.
    std::array<char, 12'288> m_characters = {};
    std::size_t m_length = 0;
};
