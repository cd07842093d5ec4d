// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QLabel>
#include <QPalette>

class QPainter;

/// A colour that follows the light or dark appearance. Resolve it when painting and again after a palette
/// change.
struct AppearanceColor
{
    QColor light;
    QColor dark;

    AppearanceColor(const QColor &lightColor, const QColor &darkColor)
        : light(lightColor)
        , dark(darkColor)
    {
    }

    /// The same colour in both appearances.
    AppearanceColor(const QColor &color)
        : AppearanceColor(color, color)
    {
    }

    /// Opaque where `isHighContrast()`.
    [[nodiscard]] QColor resolved(const QPalette &palette) const;
};

/// Whether `palette` has light text on a dark window.
[[nodiscard]] bool isDarkAppearance(const QPalette &palette);

/// Whether `palette` is in black and white, see `inHighContrast()`.
[[nodiscard]] bool isHighContrast(const QPalette &palette);

/// The accent of the break feature.
[[nodiscard]] AppearanceColor breakTeal();

/// The accent of the makers' own elements.
[[nodiscard]] AppearanceColor orvaneMauve();

/// Marks what is on or new; its contrast on the windows is at least 4.5:1.
[[nodiscard]] AppearanceColor accentColor();

/// The accents that do not follow the appearance.
inline const QColor breakTealFixed = QColor::fromRgbF(0.078F, 0.722F, 0.651F);
inline const QColor orvaneMauveFixed = QColor::fromRgbF(0.486F, 0.227F, 0.929F);

/// Dark text and marks on breakTealFixed.
inline const QColor breakTealInk(4, 47, 46);

/// Text colours from the most to the least prominent; each has a contrast of at least 4.5:1 on the windows.
[[nodiscard]] AppearanceColor labelColor();
[[nodiscard]] AppearanceColor secondaryLabelColor();
[[nodiscard]] AppearanceColor tertiaryLabelColor();

/// The label colour of `palette`'s appearance at the opacity `alpha`, for faint surfaces.
[[nodiscard]] QColor shade(const QPalette &palette, float alpha);

/// The same for the line around a control; opaque where `isHighContrast()`.
[[nodiscard]] QColor outline(const QPalette &palette, float alpha);

/// Whether `widget` has the focus and shows it: only after the user has moved the focus with the keyboard.
[[nodiscard]] bool showsFocus(const QWidget &widget);

/// Paints a ring along a rounded rectangle while `widget` shows its focus; otherwise nothing.
void paintFocusRing(QPainter &painter, const QWidget &widget, const QRectF &area, qreal cornerRadius,
                    const AppearanceColor &color = breakTeal());

/// Sets `role` in the widget's palette to the colour for its appearance. To be called again when the widget's
/// palette has changed.
void applyAppearanceColor(QWidget &widget, QPalette::ColorRole role, const AppearanceColor &color);

/// The application's font, which is the desktop's own, at `size` device-independent pixels.
[[nodiscard]] QFont systemFont(qreal size, QFont::Weight weight);

/// A label that shows every text as plain text, in a colour that follows the appearance.
class AppearanceLabel final : public QLabel
{
    Q_OBJECT

public:
    AppearanceLabel(const QString &text, const AppearanceColor &color);
    void setTextColor(const AppearanceColor &color);

protected:
    void changeEvent(QEvent *event) override;

private:
    AppearanceColor m_color;
};

/// A new label, centred, without a parent; `size` is in device-independent pixels.
[[nodiscard]] AppearanceLabel *makeLabel(const QString &text, qreal size, QFont::Weight weight,
                                         const AppearanceColor &color);

/// A view whose y grows downwards, as that of every Qt widget.
using FlippedView = QWidget;

/// Shows an image and passes every click to the widget below it.
class BadgeImageView final : public QLabel
{
    Q_OBJECT

public:
    explicit BadgeImageView(QWidget *parent = nullptr);
};

/// A disc in the red of the application's appearance, of `diameter` device-independent pixels with the larger
/// of `count` and 1 in white; longer numbers may run over the disc and are cut off at the image's edge.
[[nodiscard]] QImage quotaBadgeImage(int count, qreal diameter, qreal devicePixelRatio);
