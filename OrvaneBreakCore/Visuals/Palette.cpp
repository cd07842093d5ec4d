// SPDX-License-Identifier: GPL-3.0-or-later
#include "Palette.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>

namespace {

/// Black in the light appearance and white in the dark one, with the given opacities.
AppearanceColor gray(float lightAlpha, float darkAlpha)
{
    return {QColor::fromRgbF(0, 0, 0, lightAlpha), QColor::fromRgbF(1, 1, 1, darkAlpha)};
}

} // namespace

QColor AppearanceColor::resolved(const QPalette &palette) const
{
    QColor color = isDarkAppearance(palette) ? dark : light;
    if (isHighContrast(palette))
        color.setAlphaF(1);
    return color;
}

bool isHighContrast(const QPalette &palette)
{
    // The panel of a break, which has other colours, is a translucent black.
    const QRgb window = palette.color(QPalette::Window).rgba();
    return window == qRgb(0, 0, 0) || window == qRgb(255, 255, 255);
}

bool isDarkAppearance(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightnessF() < 0.5F;
}

AppearanceColor breakTeal()
{
    return {QColor::fromRgbF(0.051F, 0.58F, 0.533F), QColor::fromRgbF(0.176F, 0.831F, 0.749F)};
}

AppearanceColor accentColor()
{
    return {QColor(0x0b, 0x75, 0x6c), breakTealFixed};
}

AppearanceColor orvaneMauve()
{
    return {QColor::fromRgbF(0.486F, 0.227F, 0.929F), QColor::fromRgbF(0.686F, 0.573F, 0.992F)};
}

AppearanceColor labelColor()
{
    return gray(0.88F, 0.92F);
}

AppearanceColor secondaryLabelColor()
{
    return gray(0.68F, 0.72F);
}

AppearanceColor tertiaryLabelColor()
{
    return gray(0.6F, 0.6F);
}

QColor shade(const QPalette &palette, float alpha)
{
    QColor color = labelColor().resolved(palette);
    color.setAlphaF(alpha);
    return color;
}

QColor outline(const QPalette &palette, float alpha)
{
    return shade(palette, isHighContrast(palette) ? 1 : alpha);
}

bool showsFocus(const QWidget &widget)
{
    return widget.hasFocus() && widget.window()->testAttribute(Qt::WA_KeyboardFocusChange);
}

void paintFocusRing(QPainter &painter, const QWidget &widget, const QRectF &area, qreal cornerRadius,
                    const AppearanceColor &color)
{
    if (!showsFocus(widget))
        return;
    painter.setPen(QPen(color.resolved(widget.palette()), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(area, cornerRadius, cornerRadius);
}

void applyAppearanceColor(QWidget &widget, QPalette::ColorRole role, const AppearanceColor &color)
{
    QPalette changed = widget.palette();
    const QColor resolved = color.resolved(changed);
    // Setting a palette sends another event for a palette change.
    if (changed.color(role) == resolved)
        return;
    changed.setColor(role, resolved);
    widget.setPalette(changed);
}

QFont systemFont(qreal size, QFont::Weight weight)
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(std::max(1, qRound(size)));
    font.setWeight(weight);
    return font;
}

AppearanceLabel::AppearanceLabel(const QString &text, const AppearanceColor &color)
    : m_color(color)
{
    setTextFormat(Qt::PlainText);
    setText(text);
    applyAppearanceColor(*this, QPalette::WindowText, m_color);
}

void AppearanceLabel::setTextColor(const AppearanceColor &color)
{
    m_color = color;
    applyAppearanceColor(*this, QPalette::WindowText, m_color);
}

void AppearanceLabel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        applyAppearanceColor(*this, QPalette::WindowText, m_color);
    QLabel::changeEvent(event);
}

AppearanceLabel *makeLabel(const QString &text, qreal size, QFont::Weight weight,
                           const AppearanceColor &color)
{
    auto *label = new AppearanceLabel(text, color);
    label->setFont(systemFont(size, weight));
    label->setAlignment(Qt::AlignCenter);
    return label;
}

BadgeImageView::BadgeImageView(QWidget *parent)
    : QLabel(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setScaledContents(true);
}

QImage quotaBadgeImage(int count, qreal diameter, qreal devicePixelRatio)
{
    const int pixels = qCeil(diameter * devicePixelRatio);
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);

    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const AppearanceColor red(QColor(255, 59, 48), QColor(255, 69, 58));
    painter.setBrush(red.resolved(QGuiApplication::palette()));
    painter.drawEllipse(QRectF(0, 0, diameter, diameter));

    // Font sizes are whole pixels; a large font scaled down gives the exact size.
    const QFont font = systemFont(100, QFont::Bold);
    const QString text = QString::number(std::max(count, 1));
    const QFontMetricsF metrics(font);
    const qreal scale = diameter * 0.68 / 100;
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.translate(diameter / 2, diameter / 2);
    painter.scale(scale, scale);
    painter.drawText(QPointF(-metrics.horizontalAdvance(text) / 2, -metrics.height() / 2 + metrics.ascent()),
                     text);
    return image;
}
