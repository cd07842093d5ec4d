// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QRect>

class QScreen;

/// Where `screen` is, in the pixels of the display server: on X11 those of the root window, on Wayland the
/// compositor's logical pixels. The toolkit's own scale has no part in it.
[[nodiscard]] QRect nativeFrame(const QScreen &screen);

/// The smallest size in the toolkit's pixels that covers `native`, a size in those of the display server, at
/// this scale of the toolkit's.
[[nodiscard]] QSize coveringSize(QSize native, qreal scale);

/// The screens that show a picture of their own, in the order of `screens`: of those that mirror each other
/// the first, and none that shows only a part of another.
[[nodiscard]] QList<QScreen *> distinctScreens(const QList<QScreen *> &screens);
