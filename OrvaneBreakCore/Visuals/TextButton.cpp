// SPDX-License-Identifier: GPL-3.0-or-later
#include "TextButton.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

TextButton::TextButton(const QString &text, const QFont &font, const AppearanceColor &color, QMargins padding)
    : QPushButton(text)
    , m_color(color)
    , m_padding(padding)
{
    setFont(font);
    setFlat(true);
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
}

QSize TextButton::sizeHint() const
{
    const QFontMetrics metrics(font());
    return QSize(metrics.horizontalAdvance(text()), metrics.height()).grownBy(m_padding);
}

void TextButton::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    QColor color = m_color.resolved(palette());
    if (isDown())
        color.setAlphaF(color.alphaF() * 0.75F);
    else if (underMouse())
        color.setAlphaF(std::min(1.0F, color.alphaF() + 0.3F));
    QFont shown = font();
    shown.setUnderline((underMouse() && color.alpha() == 255) || showsFocus(*this));
    painter.setFont(shown);
    painter.setPen(color);
    painter.drawText(rect() - m_padding, Qt::AlignCenter, text());
}
