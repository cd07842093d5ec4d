// SPDX-License-Identifier: GPL-3.0-or-later
#include "SymbolButton.h"

#include "Symbols.h"

#include <QPainter>

namespace {

constexpr qreal symbolCornerRadius = 6;

} // namespace

SymbolButton::SymbolButton(const QString &symbol, qreal size, const QString &name)
    : m_symbol(symbol)
    , m_size(size)
{
    setToolTip(name);
    setAccessibleName(name);
    setFlat(true);
    setAttribute(Qt::WA_Hover);
}

void SymbolButton::setTint(const AppearanceColor &tint)
{
    m_tint = tint;
    update();
}

void SymbolButton::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = QRectF(rect()).adjusted(1, 1, -1, -1);
    if (isDown() || underMouse()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(shade(palette(), isDown() ? 0.16F : 0.08F));
        painter.drawRoundedRect(area, symbolCornerRadius, symbolCornerRadius);
    }
    paintFocusRing(painter, *this, area, symbolCornerRadius);
    const QImage image = Symbols::image(m_symbol, m_size, m_tint.resolved(palette()), devicePixelRatioF());
    if (!image.isNull())
        painter.drawImage(QPointF(width() - m_size, height() - m_size) / 2, image);
}
