// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

/// The description of the current exception in a report. Not for signal handlers.
struct ExceptionText
{
    /// Its demangled type; "terminate" when there is none.
    std::string name;

    /// std::exception::what(), or the thrown text itself, on one line; empty for anything else.
    std::string reason;

    [[nodiscard]] static ExceptionText ofCurrentException();
};

/// `text` as UTF-8 of limited length: invalid bytes are replaced by U+FFFD, and only the first 64 KiB remain.
[[nodiscard]] std::string validText(const std::string &text);

/// `text` with the home folder and the login name replaced by "~" wherever they are whole words.
[[nodiscard]] std::string withoutUser(std::string text, const std::string &home, const std::string &login);
