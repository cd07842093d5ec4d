// SPDX-License-Identifier: GPL-3.0-or-later
#include "Crash/FileDate.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QTimeZone>

using namespace Qt::StringLiterals;

namespace {

constexpr int decimalPlaces = 9;

QDateTime wholeSeconds(const FileDate &date)
{
    return QDateTime::fromSecsSinceEpoch(date.seconds, QTimeZone::utc());
}

} // namespace

FileDate FileDate::of(const timespec &time)
{
    // Beyond these the toolkit's calendar overflows.
    constexpr std::int64_t year10000 = 253'402'300'800;
    if (time.tv_sec < distantPast().seconds || time.tv_sec >= year10000)
        return distantPast();
    return {time.tv_sec, static_cast<std::int32_t>(time.tv_nsec)};
}

std::optional<FileDate> FileDate::parse(const QString &text)
{
    static const QRegularExpression form(
        uR"(^(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d)(?:\.(\d{1,9}))?(Z|[+-]\d\d:\d\d)$)"_s);
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const QDateTime date = QDateTime::fromString(match.captured(1) + match.captured(3), Qt::ISODate);
    if (!date.isValid())
        return std::nullopt;
    const QString decimals = match.captured(2).leftJustified(decimalPlaces, u'0');
    return FileDate{date.toSecsSinceEpoch(), decimals.toInt()};
}

QString FileDate::text() const
{
    return u"%1.%2Z"_s.arg(wholeSeconds(*this).toString(u"yyyy-MM-ddTHH:mm:ss"_s))
        .arg(nanoseconds, decimalPlaces, 10, '0'_L1);
}
