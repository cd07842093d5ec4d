// SPDX-License-Identifier: GPL-3.0-or-later
#include "Visuals/TextButton.h"

#include <QEvent>
#include <QFontMetrics>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFocusRect>

#include <algorithm>

namespace {

/// A text alone is a small target: this much around it belongs to the button as well.
constexpr int horizontalPadding = 12;

} // namespace

TextButton::TextButton(const QString &text, const QFont &font, const QColor &color)
    : QPushButton(text)
    , m_color(color)
{
    setFont(font);
    setFlat(true);
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
}

QSize TextButton::sizeHint() const
{
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(text()) + 2 * horizontalPadding, metrics.height()};
}

void TextButton::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    QColor color = m_color;
    if (isDown())
        color.setAlphaF(std::min(1.0F, color.alphaF() * 0.75F));
    else if (underMouse())
        color.setAlphaF(std::min(1.0F, color.alphaF() + 0.3F));
    painter.setPen(color);
    painter.drawText(rect(), Qt::AlignCenter, text());
    if (hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

bool TextButton::event(QEvent *event)
{
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverLeave)
        update();
    return QPushButton::event(event);
}
