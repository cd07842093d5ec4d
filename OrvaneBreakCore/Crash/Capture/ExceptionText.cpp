// SPDX-License-Identifier: GPL-3.0-or-later
#include "ExceptionText.h"

#include <QString>

#include <cxxabi.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <exception>
#include <memory>
#include <typeinfo>

namespace {

/// In bytes; the reader of the report accepts far more.
constexpr std::size_t maxTextLength = std::size_t{64} * 1024;

std::string demangled(const std::type_info &type)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    return status == 0 ? name.get() : type.name();
}

std::string reasonOfCurrentException()
{
    try {
        throw;
    } catch (const std::exception &exception) {
        return exception.what();
    } catch (const std::string &text) {
        return text;
    } catch (const char *text) {
        return text ? text : "";
    } catch (...) {
        return {};
    }
}

bool isPartOfWord(char character)
{
    constexpr unsigned char firstOutsideAscii = 0x80;
    const auto byte = static_cast<unsigned char>(character);
    return byte >= firstOutsideAscii || std::isalnum(byte) != 0 || character == '_';
}

std::string withoutWord(const std::string &text, const std::string &word)
{
    std::string result;
    std::size_t done = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        const std::size_t end = at + word.size();
        const bool isWord =
            (at == 0 || !isPartOfWord(text[at - 1])) && (end == text.size() || !isPartOfWord(text[end]));
        if (!isWord || at < done)
            continue;
        result.append(text, done, at - done).append("~");
        done = end;
    }
    return result.append(text, done);
}

} // namespace

ExceptionText ExceptionText::ofCurrentException()
{
    const std::type_info *type = abi::__cxa_current_exception_type();
    if (!type)
        return {"terminate", {}};
    ExceptionText text{demangled(*type), reasonOfCurrentException()};
    // The message is the first line of the report.
    std::replace(text.reason.begin(), text.reason.end(), '\n', ' ');
    return text;
}

std::string validText(const std::string &text)
{
    return QString::fromStdString(text.substr(0, maxTextLength)).toStdString();
}

std::string withoutUser(std::string text, const std::string &home, const std::string &login)
{
    if (home.size() > 1)
        text = withoutWord(text, home);
    return login.empty() ? text : withoutWord(text, login);
}
