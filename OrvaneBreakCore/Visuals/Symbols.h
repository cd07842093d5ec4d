// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QString>

/// The pictures of the application, drawn from the vector files it is built with: "eye", "eye.fill",
/// "gearshape.fill", "envelope.fill" and "chevron.left".
namespace Symbols {

/// The symbol `name` in the colour `tint`, on a transparent square of `size` device-independent pixels,
/// rendered for `devicePixelRatio`. A null image for an unknown name and for an empty square.
[[nodiscard]] QImage image(const QString &name, qreal size, const QColor &tint, qreal devicePixelRatio);

/// The symbol `name` in the colour `tint`, rendered for each size that trays, menus and buttons use, from 14
/// to 64 pixels. A null icon for an unknown name. Needs the application object.
[[nodiscard]] QIcon icon(const QString &name, const QColor &tint);

/// The icon of the application's windows, in sizes from 16 to `largest` pixels, at most 256. Needs the
/// application object.
[[nodiscard]] QIcon applicationIcon(int largest = 256);

} // namespace Symbols
