// SPDX-License-Identifier: GPL-3.0-or-later
#include "FileDate.h"

#include <QDateTime>
#include <QTimeZone>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

constexpr int decimalPlaces = 9;

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

/// Whether `text` matches `form`, where a "d" stands for a digit. Not a regular expression, because every
/// start parses a date, and regular expressions cost half a megabyte of memory.
bool matches(const QString &text, QLatin1StringView form)
{
    return text.size() == form.size() &&
           std::equal(text.begin(), text.end(), form.begin(), [](QChar character, char expected) {
               return expected == 'd' ? isDigit(character) : character == QLatin1Char(expected);
           });
}

} // namespace

FileDate FileDate::of(const timespec &time)
{
    // Qt's calendar overflows beyond these dates.
    constexpr std::int64_t year10000 = 253'402'300'800;
    if (time.tv_sec < distantPast().seconds || time.tv_sec >= year10000)
        return distantPast();
    return {time.tv_sec, static_cast<std::int32_t>(time.tv_nsec)};
}

std::optional<FileDate> FileDate::parse(const QString &text)
{
    static constexpr auto secondsForm = "dddd-dd-ddTdd:dd:dd"_L1;
    const QString seconds = text.first(std::min(text.size(), secondsForm.size()));
    QString zone = text.sliced(seconds.size());
    QString decimals;
    if (zone.startsWith(u'.')) {
        const auto end = std::find_if_not(std::next(zone.cbegin()), zone.cend(), isDigit);
        decimals = QString(std::next(zone.cbegin()), std::distance(zone.cbegin(), end) - 1);
        zone.remove(0, decimals.size() + 1);
        if (decimals.isEmpty() || decimals.size() > decimalPlaces)
            return std::nullopt;
    }
    const bool isZone = zone == u'Z' || matches(zone, "+dd:dd"_L1) || matches(zone, "-dd:dd"_L1);
    const QDateTime date = QDateTime::fromString(seconds + zone, Qt::ISODate);
    if (!matches(seconds, secondsForm) || !isZone || !date.isValid())
        return std::nullopt;
    return FileDate{date.toSecsSinceEpoch(), decimals.leftJustified(decimalPlaces, u'0').toInt()};
}

QString FileDate::text() const
{
    const QDateTime date = QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc());
    return u"%1.%2Z"_s.arg(date.toString(u"yyyy-MM-ddTHH:mm:ss"_s))
        .arg(nanoseconds, decimalPlaces, 10, '0'_L1);
}
