// SPDX-License-Identifier: GPL-3.0-or-later
#include "Card.h"

#include "Palette.h"

#include <QPainter>

namespace {

constexpr qreal cardCornerRadius = 10;

} // namespace

void Card::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(outline(palette(), 0.08F), 1));
    painter.setBrush(shade(palette(), 0.05F));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cardCornerRadius,
                            cardCornerRadius);
}

void Separator::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), shade(palette(), 0.12F));
}
