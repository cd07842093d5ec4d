// SPDX-License-Identifier: GPL-3.0-or-later
#include "AccentButton.h"

#include "Palette.h"

#include <QFontMetrics>
#include <QPainter>

namespace {

constexpr int bezelHeight = 32;
constexpr int horizontalPadding = 20;
constexpr qreal buttonCornerRadius = 7;

/// Dark or light, whichever contrasts more with the bezel.
QColor titleColor(const QColor &bezel)
{
    return qGray(bezel.rgb()) > 110 ? breakTealInk : QColor(Qt::white);
}

} // namespace

AccentButton::AccentButton(const QString &title, const QColor &bezel)
    : QPushButton(title)
    , m_bezel(bezel)
{
    setFont(systemFont(14, QFont::DemiBold));
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize AccentButton::sizeHint() const
{
    return {QFontMetrics(font()).horizontalAdvance(text()) + 2 * horizontalPadding, bezelHeight};
}

void AccentButton::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = QRectF(rect()).adjusted(2, 2, -2, -2);
    QColor fill = m_bezel;
    if (isDown())
        fill = m_bezel.darker(118);
    else if (underMouse())
        fill = m_bezel.lighter(110);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(area, buttonCornerRadius, buttonCornerRadius);
    paintFocusRing(painter, *this, QRectF(rect()).adjusted(1, 1, -1, -1), buttonCornerRadius + 1,
                   labelColor());
    painter.setPen(titleColor(m_bezel));
    painter.setFont(font());
    painter.drawText(rect(), Qt::AlignCenter, text());
}
