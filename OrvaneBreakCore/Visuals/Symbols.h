// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QString>

/// The pictures of the application, drawn from the vector files it is built with: "eye", "eye.fill",
/// "gearshape.fill", "envelope.fill" and "chevron.left".
namespace Symbols {

/// The symbol `name` in the colour `tint`, on a transparent square of `size` device-independent pixels, as
/// sharp as `devicePixelRatio` asks for. A null image for an unknown name and for a square without any pixel.
[[nodiscard]] QImage image(const QString &name, qreal size, const QColor &tint, qreal devicePixelRatio);

/// The symbol `name` in the colour `tint`, drawn anew for each size that trays, menus and buttons use, from
/// 14 to 64 pixels. A null icon for an unknown name. Needs the application object.
[[nodiscard]] QIcon icon(const QString &name, const QColor &tint);

/// The icon of the application's windows, from 16 to `largest` pixels, of the 256 that there are. Needs the
/// application object.
[[nodiscard]] QIcon applicationIcon(int largest = 256);

} // namespace Symbols
