// SPDX-License-Identifier: GPL-3.0-or-later
#include "ColumnFit.h"

#include "RingView.h"

#include <QBoxLayout>

#include <algorithm>
#include <cmath>

namespace {

/// Letters are made of whole pixels, so that a text may be wider than its font size promises.
constexpr qreal shrinkStep = 0.98;
constexpr qreal minFactor = 0.1;

int scaled(int length, qreal factor)
{
    return static_cast<int>(std::floor(length * factor));
}

} // namespace

ColumnFit::ColumnFit(QBoxLayout &column, RingView &ring)
    : m_column(column)
    , m_ring(ring)
    , m_ringSize(ring.minimumSize())
{
    for (int index = 0; index < column.count(); ++index) {
        QLayoutItem *item = column.itemAt(index);
        QWidget *widget = item->widget();
        if (widget && widget != &ring)
            m_texts.push_back({widget, widget->font()});
        else if (QSpacerItem *gap = item->spacerItem(); gap && gap->sizeHint().height() > 0)
            m_gaps.push_back({gap, gap->sizeHint().height()});
    }
}

void ColumnFit::fit(QSize room)
{
    scale(1);
    while (!fits(room) && m_factor > minFactor)
        scale(m_factor * shrinkStep);
}

void ColumnFit::scale(qreal factor)
{
    if (factor == m_factor)
        return;
    m_factor = factor;
    for (const auto &[widget, font] : m_texts) {
        QFont smaller = font;
        smaller.setPixelSize(std::max(1, scaled(font.pixelSize(), factor)));
        widget->setFont(smaller);
    }
    m_ring.setFixedSize(scaled(m_ringSize.width(), factor), scaled(m_ringSize.height(), factor));
    m_ring.setScale(factor);
    for (const auto &[item, height] : m_gaps)
        item->changeSize(0, scaled(height, factor), QSizePolicy::Minimum, QSizePolicy::Fixed);
    m_column.invalidate();
}

bool ColumnFit::fits(QSize room) const
{
    const QSize wanted = m_column.sizeHint();
    return wanted.width() <= room.width() && wanted.height() <= room.height();
}
