// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScreenFrame.h"

#include <QScreen>
#include <QtMath>
#include <qpa/qplatformscreen.h>

#include <algorithm>

QRect nativeFrame(const QScreen &screen)
{
    return screen.handle()->geometry();
}

QSize coveringSize(QSize native, qreal scale)
{
    return {qCeil(native.width() / scale), qCeil(native.height() / scale)};
}

QList<QScreen *> distinctScreens(const QList<QScreen *> &screens)
{
    QList<QScreen *> distinct;
    for (QScreen *screen : screens) {
        const QRect frame = nativeFrame(*screen);
        const auto shows = [&](const QScreen *other) { return nativeFrame(*other).contains(frame); };
        if (std::any_of(distinct.cbegin(), distinct.cend(), shows))
            continue;
        distinct.removeIf([&](const QScreen *other) { return frame.contains(nativeFrame(*other)); });
        distinct.append(screen);
    }
    return distinct;
}
