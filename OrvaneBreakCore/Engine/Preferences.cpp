// SPDX-License-Identifier: GPL-3.0-or-later
#include "Preferences.h"

#include <QTimeZone>
#include <QVariant>

std::optional<qint64> Preferences::integer(const QString &key) const
{
    // Only the variant distinguishes a number stored as a 64-bit integer from any other number.
    const QVariant variant = value(key).toVariant();
    if (variant.typeId() != QMetaType::LongLong)
        return std::nullopt;
    return variant.toLongLong();
}

std::optional<bool> Preferences::boolean(const QString &key) const
{
    const QJsonValue stored = value(key);
    if (!stored.isBool())
        return std::nullopt;
    return stored.toBool();
}

std::optional<QString> Preferences::text(const QString &key) const
{
    const QJsonValue stored = value(key);
    if (!stored.isString())
        return std::nullopt;
    return stored.toString();
}

std::optional<QJsonArray> Preferences::array(const QString &key) const
{
    const QJsonValue stored = value(key);
    if (!stored.isArray())
        return std::nullopt;
    return stored.toArray();
}

std::optional<QDateTime> Preferences::date(const QString &key) const
{
    const std::optional<QString> stored = text(key);
    if (!stored)
        return std::nullopt;
    const QDateTime date = QDateTime::fromString(*stored, Qt::ISODateWithMs);
    if (!date.isValid())
        return std::nullopt;
    return date.toUTC();
}

void Preferences::setDate(const QString &key, const QDateTime &date)
{
    setValue(key, date.toUTC().toString(Qt::ISODateWithMs));
}
