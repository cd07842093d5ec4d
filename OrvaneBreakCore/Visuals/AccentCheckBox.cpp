// SPDX-License-Identifier: GPL-3.0-or-later
#include "AccentCheckBox.h"

#include "Palette.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace {

constexpr int indicatorSize = 15;
constexpr int gap = 7;
constexpr qreal boxCornerRadius = 4;

/// The tick, in a square of side 1.
QPainterPath tick()
{
    QPainterPath path({0.24, 0.53});
    path.lineTo(0.43, 0.71);
    path.lineTo(0.77, 0.31);
    return path;
}

} // namespace

AccentCheckBox::AccentCheckBox(const QString &title)
    : QCheckBox(title)
{
    setAttribute(Qt::WA_Hover);
}

QSize AccentCheckBox::sizeHint() const
{
    const QFontMetrics metrics(font());
    return {indicatorSize + gap + metrics.horizontalAdvance(text()) + 3,
            std::max(indicatorSize, metrics.height()) + 4};
}

bool AccentCheckBox::hitButton(const QPoint &place) const
{
    return rect().contains(place);
}

QRectF AccentCheckBox::indicator() const
{
    // At half-pixel coordinates, where a line of one pixel is sharp.
    const int top = (height() - indicatorSize) / 2;
    return {0.5, top + 0.5, indicatorSize - 1, indicatorSize - 1};
}

void AccentCheckBox::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintIndicator(painter);
    const QRect textArea = rect().adjusted(indicatorSize + gap, 0, 0, 0);
    paintFocusRing(painter, *this, QRectF(textArea).adjusted(-4, 1, -1, -1), boxCornerRadius);
    painter.setPen(labelColor().resolved(palette()));
    painter.setFont(font());
    painter.drawText(textArea, Qt::AlignLeft | Qt::AlignVCenter, text());
}

void AccentCheckBox::paintIndicator(QPainter &painter) const
{
    const QRectF square = indicator();
    const bool isHot = isDown() || underMouse();
    if (!isChecked()) {
        painter.setPen(QPen(outline(palette(), isHot ? 0.8F : 0.55F), 1));
        painter.setBrush(shade(palette(), isDown() ? 0.15F : 0.04F));
        painter.drawRoundedRect(square, boxCornerRadius, boxCornerRadius);
        return;
    }
    const QColor fill = accentColor().resolved(palette());
    painter.setPen(Qt::NoPen);
    painter.setBrush(isDown() ? fill.darker(115) : fill);
    painter.drawRoundedRect(square.adjusted(-0.5, -0.5, 0.5, 0.5), boxCornerRadius, boxCornerRadius);
    const QColor ink = AppearanceColor(QColor(Qt::white), breakTealInk).resolved(palette());
    painter.setPen(QPen(ink, 2 / square.width(), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.translate(square.topLeft());
    painter.scale(square.width(), square.height());
    painter.drawPath(tick());
    painter.resetTransform();
}
