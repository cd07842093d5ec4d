// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <nlohmann/json_fwd.hpp>

#include <memory>
#include <optional>
#include <string>

/// A JSON object from outside, parsed strictly: an integer is written as one and fits 64 bits, so 1e3, 1.0,
/// true and "7" are not integers; texts are valid UTF-8. Of members with the same name the last one counts.
class StrictJson
{
public:
    /// The object in `bytes`, which may be any bytes; absent if they are not a JSON object.
    [[nodiscard]] static std::optional<StrictJson> parseObject(const QByteArray &bytes);

    ~StrictJson();
    StrictJson(StrictJson &&) noexcept;
    StrictJson(const StrictJson &) = delete;
    StrictJson &operator=(const StrictJson &) = delete;
    StrictJson &operator=(StrictJson &&) = delete;

    /// The member `name`; absent if there is none or it has another type.
    [[nodiscard]] std::optional<std::string> text(const char *name) const;
    [[nodiscard]] std::optional<std::int64_t> integer(const char *name) const;
    [[nodiscard]] std::optional<bool> boolean(const char *name) const;

private:
    explicit StrictJson(std::unique_ptr<nlohmann::json> object);

    std::unique_ptr<nlohmann::json> m_object;
};
