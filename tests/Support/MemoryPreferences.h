// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Preferences.h"

#include <QJsonObject>

#include <utility>

/// Preferences in memory.
class MemoryPreferences final : public Preferences
{
public:
    MemoryPreferences() = default;

    explicit MemoryPreferences(QJsonObject values)
        : stored(std::move(values))
    {
    }

    [[nodiscard]] QJsonValue value(const QString &key) const override { return stored.value(key); }

    void setValue(const QString &key, const QJsonValue &value) override
    {
        if (value.isUndefined())
            stored.remove(key);
        else
            stored.insert(key, value);
    }

    QJsonObject stored;
};
