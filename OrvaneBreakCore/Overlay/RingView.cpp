// SPDX-License-Identifier: GPL-3.0-or-later
#include "RingView.h"

#include "Palette.h"

#include <QAccessible>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace {

constexpr qreal lineWidth = 10;
constexpr qreal numberSize = 44;

/// The advance of the widest digit: every digit is drawn in a cell of this width, so that the number does not
/// shift sideways as it counts down, whatever figures the desktop's font has.
qreal digitCellWidth(const QFontMetricsF &metrics)
{
    qreal width = 0;
    for (char16_t digit = u'0'; digit <= u'9'; ++digit)
        width = std::max(width, metrics.horizontalAdvance(QChar(digit)));
    return width;
}

} // namespace

RingView::RingView(QWidget *parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::NoFocus);
}

void RingView::setFraction(double fraction)
{
    m_fraction = fraction;
    update();
}

void RingView::setSecondsLeft(qint64 secondsLeft)
{
    const bool isChanged = std::exchange(m_secondsLeft, secondsLeft) != secondsLeft;
    update();
    if (isChanged) {
        QAccessibleValueChangeEvent change(this, secondsLeft);
        QAccessible::updateAccessibility(&change);
    }
}

void RingView::setScale(qreal scale)
{
    m_scale = scale;
    update();
}

void RingView::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(rect()).center());
    painter.scale(m_scale, m_scale);

    const qreal radius = std::min(width(), height()) / m_scale * 0.5 - lineWidth;
    const QRectF circle(-radius, -radius, 2 * radius, 2 * radius);
    painter.setPen(QPen(QColor::fromRgbF(1, 1, 1, 0.15F), lineWidth));
    painter.drawEllipse(circle);
    if (m_fraction > 0) {
        painter.setPen(QPen(breakTeal().dark, lineWidth, Qt::SolidLine, Qt::RoundCap));
        // The same picture for an opaque colour, but the raster engine paints it right here instead of waking
        // its threads.
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        // Sixteenths of a degree, anticlockwise from three o'clock: from twelve o'clock on, clockwise.
        painter.drawArc(circle, 90 * 16, qRound(-360 * 16 * std::min(m_fraction, 1.0)));
    }
    paintNumber(painter);
}

void RingView::paintNumber(QPainter &painter) const
{
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    const QFont font = systemFont(numberSize, QFont::Bold);
    const QFontMetricsF metrics(font);
    const QString text = QString::number(m_secondsLeft);
    const qreal cellWidth = digitCellWidth(metrics);
    const qreal baseline = -metrics.height() / 2 + metrics.ascent();
    qreal left = -cellWidth * static_cast<qreal>(text.size()) / 2;
    painter.setFont(font);
    painter.setPen(Qt::white);
    for (const QChar character : text) {
        painter.drawText(QPointF(left + (cellWidth - metrics.horizontalAdvance(character)) / 2, baseline),
                         character);
        left += cellWidth;
    }
}
