// SPDX-License-Identifier: GPL-3.0-or-later
#include "RingView.h"

#include "Palette.h"

#include <QAccessible>
#include <QFontMetricsF>
#include <QPaintEvent>
#include <QPainter>
#include <QRegion>
#include <QtMath>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace {

constexpr qreal lineWidth = 10;
constexpr qreal numberSize = 44;

/// Of an arc, in sixteenths of a degree.
constexpr int quarterLength = 90 * 16;

QFont numberFont()
{
    return systemFont(numberSize, QFont::Bold);
}

/// The advance of the widest digit: every digit is drawn in a cell of this width, so that the number does not
/// shift sideways as it counts down, whatever figures the desktop's font has.
qreal digitCellWidth(const QFontMetricsF &metrics)
{
    qreal width = 0;
    for (char16_t digit = u'0'; digit <= u'9'; ++digit)
        width = std::max(width, metrics.horizontalAdvance(QChar(digit)));
    return width;
}

/// The length of the arc in sixteenths of a degree. Lengths that round to the same number are drawn alike.
int arcLength(double fraction)
{
    return fraction > 0 ? qRound(360 * 16 * std::min(fraction, 1.0)) : 0;
}

/// Widens `area` to pixels of the screen that no common scale, a multiple of a quarter, cuts in two.
QRect onWholePixels(const QRectF &area)
{
    constexpr int grid = 4;
    const auto before = [](qreal position) { return qFloor(position / grid) * grid; };
    const auto behind = [](qreal position) { return qCeil(position / grid) * grid; };
    return {QPoint(before(area.left()), before(area.top())),
            QPoint(behind(area.right()) - 1, behind(area.bottom()) - 1)};
}

} // namespace

RingView::RingView(QWidget *parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::NoFocus);
}

void RingView::setFraction(double fraction)
{
    const QRegion areaBefore = lastQuarter();
    const int lengthBefore = arcLength(std::exchange(m_fraction, fraction));
    const int length = arcLength(fraction);
    if (length == lengthBefore)
        return;
    const bool isStep = length > 0 && lengthBefore > 0 && std::abs(length - lengthBefore) < quarterLength;
    update(isStep ? areaBefore | lastQuarter() : rect());
}

void RingView::setSecondsLeft(qint64 secondsLeft)
{
    if (secondsLeft == m_secondsLeft)
        return;
    const QRect before = numberArea();
    m_secondsLeft = secondsLeft;
    update(before | numberArea());
    QAccessibleValueChangeEvent change(this, secondsLeft);
    QAccessible::updateAccessibility(&change);
}

void RingView::setScale(qreal scale)
{
    m_scale = scale;
    m_track = {};
    update();
}

/// Of the middle of the arc's line, in the units of a view of 150 x 150.
qreal RingView::radius() const
{
    return std::min(width(), height()) / m_scale * 0.5 - lineWidth;
}

QPointF RingView::toView(QPointF point) const
{
    return QRectF(rect()).center() + m_scale * point;
}

/// Where the arc was drawn since it last crossed an axis. The curve of a quarter is approximated anew for
/// each length, which moves its edges by a fraction of a pixel; those of the other quarters stay.
QRect RingView::lastQuarter() const
{
    const auto around = [this](int length) {
        const qreal angle = qDegreesToRadians(length / 16.0);
        const QPointF middle = toView(radius() * QPointF(std::sin(angle), -std::cos(angle)));
        const qreal reach = m_scale * lineWidth / 2 + 1;
        return QRectF(middle.x() - reach, middle.y() - reach, 2 * reach, 2 * reach);
    };
    const int length = arcLength(m_fraction);
    return onWholePixels(around(length) | around(length - length % quarterLength));
}

QRect RingView::numberArea() const
{
    const QFontMetricsF metrics(numberFont());
    const qreal digits = static_cast<qreal>(QString::number(m_secondsLeft).size());
    // Bold digits may reach beyond their cells.
    const QPointF corner((digits + 1) * digitCellWidth(metrics) / 2, metrics.height() / 2 + 1);
    return onWholePixels({toView(-corner), toView(corner)}) & rect();
}

void RingView::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    const QTransform toScreen = painter.deviceTransform();
    prepareTrack(toScreen);
    const QRectF pixels = toScreen.mapRect(QRectF(rect())).toAlignedRect();
    painter.drawImage(toScreen.inverted().mapRect(pixels), m_track);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(toView({}));
    painter.scale(m_scale, m_scale);
    paintArc(painter);
    if (event->region().intersects(numberArea()))
        paintNumber(painter);
}

/// Translucent curves are painted once: older versions of Qt wake threads for them.
void RingView::prepareTrack(const QTransform &toScreen)
{
    const QRect pixels = toScreen.mapRect(QRectF(rect())).toAlignedRect();
    if (m_track.size() == pixels.size() && m_trackTransform == toScreen)
        return;
    m_trackTransform = toScreen;
    m_track = QImage(pixels.size(), QImage::Format_ARGB32_Premultiplied);
    m_track.fill(Qt::transparent);
    QPainter painter(&m_track);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setTransform(toScreen * QTransform::fromTranslate(-pixels.x(), -pixels.y()));
    painter.translate(toView({}));
    painter.scale(m_scale, m_scale);
    painter.setPen(QPen(QColor::fromRgbF(1, 1, 1, 0.15F), lineWidth));
    painter.drawEllipse(QPointF(), radius(), radius());
}

void RingView::paintArc(QPainter &painter) const
{
    const int length = arcLength(m_fraction);
    if (length == 0)
        return;
    painter.setPen(QPen(breakTeal().dark, lineWidth, Qt::SolidLine, Qt::RoundCap));
    // The same picture for an opaque colour, but the raster engine paints it right here.
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    const QRectF circle(-radius(), -radius(), 2 * radius(), 2 * radius());
    // Anticlockwise from three o'clock: from twelve o'clock on, clockwise.
    painter.drawArc(circle, 90 * 16, -length);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

void RingView::paintNumber(QPainter &painter) const
{
    const QFont font = numberFont();
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
