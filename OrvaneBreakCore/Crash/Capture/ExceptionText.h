// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

/// What a report says of the exception that is being handled. Not for signal handlers.
struct ExceptionText
{
    /// Its type, readable; "terminate" when there is none.
    std::string name;

    /// What std::exception::what() says, or the thrown text itself, on one line; empty for anything else.
    std::string reason;

    [[nodiscard]] static ExceptionText ofCurrentException();
};

/// `text` without what tells who the user is: their home folder is written "~", and so is their login name
/// wherever it stands as a word.
[[nodiscard]] std::string withoutUser(std::string text, const std::string &home, const std::string &login);
