// SPDX-License-Identifier: GPL-3.0-or-later
#include "StrictJson.h"

// Qt's parser turns 1e3 and 1.0 into integers, which hides how they were written.
#include <nlohmann/json.hpp>

#include <limits>
#include <utility>

namespace {

template <typename Value>
std::optional<Value> member(const nlohmann::json &object, const char *name,
                            bool (nlohmann::json::*isType)() const noexcept)
{
    const auto found = object.find(name);
    if (found == object.end() || !((*found).*isType)())
        return std::nullopt;
    return found->get<Value>();
}

} // namespace

StrictJson::StrictJson(std::unique_ptr<nlohmann::json> object)
    : m_object(std::move(object))
{
}

StrictJson::~StrictJson() = default;
StrictJson::StrictJson(StrictJson &&) noexcept = default;

std::optional<StrictJson> StrictJson::parseObject(const QByteArray &bytes)
{
    auto value = std::make_unique<nlohmann::json>(
        nlohmann::json::parse(bytes.constData(), bytes.constData() + bytes.size(), nullptr, false));
    if (!value->is_object())
        return std::nullopt;
    return StrictJson(std::move(value));
}

std::optional<std::string> StrictJson::text(const char *name) const
{
    return member<std::string>(*m_object, name, &nlohmann::json::is_string);
}

std::optional<std::int64_t> StrictJson::integer(const char *name) const
{
    const auto large = member<std::uint64_t>(*m_object, name, &nlohmann::json::is_number_unsigned);
    if (large && *large > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        return std::nullopt;
    return member<std::int64_t>(*m_object, name, &nlohmann::json::is_number_integer);
}

std::optional<bool> StrictJson::boolean(const char *name) const
{
    return member<bool>(*m_object, name, &nlohmann::json::is_boolean);
}
