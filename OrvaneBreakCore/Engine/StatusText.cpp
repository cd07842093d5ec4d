// SPDX-License-Identifier: GPL-3.0-or-later
#include "StatusText.h"

#include <algorithm>

using namespace Qt::StringLiterals;

QString breakStatusText(bool isOnBreak, bool isActive, std::optional<Date> nextBreakDate, Date now)
{
    if (isOnBreak)
        return u"Pause en cours : regarde au loin"_s;
    if (!isActive || !nextBreakDate)
        return u"Rappels désactivés"_s;

    const qint64 roundedUp = std::chrono::ceil<std::chrono::minutes>(*nextBreakDate - now).count();
    const qint64 minutes = std::max<qint64>(roundedUp, 1);
    if (minutes >= 60)
        return u"Prochaine pause dans %1 h %2"_s.arg(minutes / 60).arg(minutes % 60, 2, 10, '0'_L1);
    return u"Prochaine pause dans %1 min"_s.arg(minutes);
}
