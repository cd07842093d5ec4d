// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QJsonArray>
#include <QJsonValue>
#include <QString>

#include <optional>

/// The user's preferences: named values that survive the process. Every value is read at each use and written
/// when it changes; none is cached. User-interface thread only.
class Preferences
{
public:
    Preferences() = default;
    virtual ~Preferences() = default;
    Preferences(const Preferences &) = delete;
    Preferences &operator=(const Preferences &) = delete;

    /// The value stored under `key`, or Undefined when there is none.
    [[nodiscard]] virtual QJsonValue value(const QString &key) const = 0;

    /// Stores `value` under `key`; Undefined removes the key. Failures are silent; the value is then kept
    /// until the process ends.
    virtual void setValue(const QString &key, const QJsonValue &value) = 0;

    /// Typed reads: absent when the key is missing or holds a value of another type (true and 1.5 are not
    /// integers, 1 is not a boolean, a date is an ISO 8601 text).
    [[nodiscard]] std::optional<qint64> integer(const QString &key) const;
    [[nodiscard]] std::optional<bool> boolean(const QString &key) const;
    [[nodiscard]] std::optional<QString> text(const QString &key) const;
    [[nodiscard]] std::optional<QJsonArray> array(const QString &key) const;
    [[nodiscard]] std::optional<QDateTime> date(const QString &key) const;

    /// Stores `date` as ISO 8601 text in UTC with milliseconds.
    void setDate(const QString &key, const QDateTime &date);
};
