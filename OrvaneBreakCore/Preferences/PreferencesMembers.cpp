// SPDX-License-Identifier: GPL-3.0-or-later
#include "PreferencesMembers.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr QByteArrayView opening = "{\n";
constexpr QByteArrayView indentation = "    ";
constexpr QByteArrayView separator = ",\n";
constexpr QByteArrayView closing = "\n}\n";

/// The parser for numbers up to 1e4932; a number beyond the range of its type is an error to it.
using WideJson =
    nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t, std::uint64_t, long double>;

/// Reads a text for the parser and tells how far it has read.
class TrackedText
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char *;
    using reference = const char &;

    TrackedText(const char *current, const char *&read)
        : m_current(current)
        , m_read(&read)
    {
    }

    reference operator*() const { return *m_current; }

    TrackedText &operator++()
    {
        *m_read = ++m_current;
        return *this;
    }

    TrackedText operator++(int)
    {
        TrackedText old = *this;
        ++*this;
        return old;
    }

    bool operator==(const TrackedText &other) const { return m_current == other.m_current; }
    bool operator!=(const TrackedText &other) const { return m_current != other.m_current; }

private:
    const char *m_current;
    const char **m_read;
};

struct Extent
{
    std::string name;
    qsizetype begin = 0;
    qsizetype end = 0;
};

/// Finds where the members of the outermost object begin and end. The parser calls each function when it has
/// just read the last character of what the function is named after, and one more after a number.
class MemberFinder
{
public:
    explicit MemberFinder(const QByteArray &json)
        : m_begin(json.constData())
        , m_read(m_begin)
    {
        const char *end = m_begin + json.size();
        m_isValid = WideJson::sax_parse(TrackedText(m_begin, m_read), TrackedText(end, m_read), this) &&
                    m_read == end;
    }

    [[nodiscard]] bool isValid() const { return m_isValid; }
    [[nodiscard]] const std::vector<Extent> &extents() const { return m_extents; }

    bool null() { return endValue(0); }
    bool boolean(bool /*value*/) { return endValue(0); }
    bool number_integer(std::int64_t /*value*/) { return endValue(1); }
    bool number_unsigned(std::uint64_t /*value*/) { return endValue(1); }
    bool number_float(long double /*value*/, const std::string & /*text*/) { return endValue(1); }
    bool string(const std::string & /*value*/) { return endValue(0); }
    bool binary(const WideJson::binary_t & /*value*/) { return false; }

    bool start_object(std::size_t /*size*/)
    {
        if (m_depth++ == 0)
            m_memberBegin = m_read - m_begin;
        return true;
    }

    bool key(const std::string &name)
    {
        if (m_depth == 1)
            m_name = name;
        return true;
    }

    bool end_object() { return --m_depth == 0 || endValue(0); }
    bool start_array(std::size_t /*size*/) { return m_depth++ > 0; }
    bool end_array() { return end_object(); }

    static bool parse_error(std::size_t /*position*/, const std::string & /*token*/,
                            const nlohmann::detail::exception & /*error*/)
    {
        return false;
    }

private:
    bool endValue(qsizetype readAhead)
    {
        if (m_depth == 1) {
            const qsizetype end = m_read - m_begin - readAhead;
            m_extents.push_back({m_name, m_memberBegin, end});
            m_memberBegin = end;
        }
        return m_depth > 0;
    }

    const char *m_begin;
    const char *m_read;
    bool m_isValid = false;
    qsizetype m_depth = 0;
    qsizetype m_memberBegin = 0;
    std::string m_name;
    std::vector<Extent> m_extents;
};

/// Replaces the escapes of surrogates, which the parser accepts only in pairs, by others of the same length.
QByteArray withoutSurrogates(QByteArray json)
{
    for (qsizetype at = json.indexOf('\\'); at >= 0 && at + 2 < json.size();
         at = json.indexOf('\\', at + 2)) {
        if (json.at(at + 1) == 'u' && (json.at(at + 2) == 'd' || json.at(at + 2) == 'D'))
            json[at + 2] = '0';
    }
    return json;
}

/// `json`, an object with one member, without what surrounds the member.
QByteArray onlyMember(const QByteArray &json)
{
    return json.mid(opening.size() + indentation.size(),
                    json.size() - opening.size() - indentation.size() - closing.size());
}

} // namespace

std::optional<PreferencesMembers> PreferencesMembers::parse(const QByteArray &json)
{
    // The parser takes a NUL for the end of the text.
    if (json.contains('\0'))
        return std::nullopt;
    const MemberFinder finder(withoutSurrogates(json));
    if (!finder.isValid())
        return std::nullopt;
    PreferencesMembers result;
    for (const Extent &extent : finder.extents()) {
        // Only spaces and a comma come before the name.
        const qsizetype begin = json.indexOf('"', extent.begin);
        result.m_members.append(
            decoded(json.mid(begin, extent.end - begin), QString::fromStdString(extent.name)));
    }
    return result;
}

PreferencesMembers::Member PreferencesMembers::decoded(const QByteArray &text, const QString &otherwiseNamed)
{
    const QJsonObject object = QJsonDocument::fromJson('{' + text + '}').object();
    if (object.isEmpty())
        return {otherwiseNamed, text, QJsonValue::Undefined};
    return {object.constBegin().key(), text, object.constBegin().value()};
}

QJsonValue PreferencesMembers::value(const QString &key) const
{
    const auto found = std::find_if(m_members.crbegin(), m_members.crend(),
                                    [&key](const Member &member) { return member.name == key; });
    return found != m_members.crend() ? found->value : QJsonValue(QJsonValue::Undefined);
}

void PreferencesMembers::set(const QString &key, const QJsonValue &value)
{
    if (value.isUndefined()) {
        m_members.removeIf([&key](const Member &member) { return member.name == key; });
        return;
    }
    // A name that is not valid Unicode changes when it is written.
    const Member changed = decoded(onlyMember(QJsonDocument(QJsonObject{{key, value}}).toJson()), key);
    const auto isIt = [&changed](const Member &member) { return member.name == changed.name; };
    const auto first = std::find_if(m_members.begin(), m_members.end(), isIt);
    if (first == m_members.end()) {
        m_members.append(changed);
        return;
    }
    *first = changed;
    m_members.erase(std::remove_if(first + 1, m_members.end(), isIt), m_members.end());
}

QByteArray PreferencesMembers::json() const
{
    QByteArray result;
    for (const Member &member : m_members) {
        result += result.isEmpty() ? opening : separator;
        result += indentation;
        result += member.text;
    }
    if (m_members.isEmpty())
        result += opening.chopped(1);
    return result += closing;
}
