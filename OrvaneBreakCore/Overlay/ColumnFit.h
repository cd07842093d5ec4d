// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QSize>

#include <vector>

class QBoxLayout;
class QSpacerItem;
class QWidget;
class RingView;

/// Shrinks the column of a break where the screen has no room for it: the texts, the ring and the gaps by one
/// factor. Elsewhere nothing changes.
class ColumnFit
{
public:
    /// `column` holds `ring`, texts with fonts of their own and gaps, all in their full size. Both outlive
    /// this object.
    ColumnFit(QBoxLayout &column, RingView &ring);

    /// Makes the column as large as `room` allows, and at most as large as it was at first.
    void fit(QSize room);

private:
    struct Text
    {
        QWidget *widget;
        QFont font;
    };
    struct Gap
    {
        QSpacerItem *item;
        int height;
    };

    void scale(qreal factor);
    [[nodiscard]] bool fits(QSize room) const;

    QBoxLayout &m_column;
    RingView &m_ring;
    QSize m_ringSize;
    std::vector<Text> m_texts;
    std::vector<Gap> m_gaps;
    qreal m_factor = 1;
};
