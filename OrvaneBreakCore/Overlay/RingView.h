// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QTransform>
#include <QWidget>

/// The countdown of a break: a faint circle, a teal arc over it for what is left, and the seconds at its
/// centre. Setting a value repaints what it changes: the quarter of the ring with the end of the arc, or the
/// number.
class RingView final : public QWidget
{
    Q_OBJECT

public:
    explicit RingView(QWidget *parent = nullptr);

    /// Part of the break still to run, 1 for all of it; drawn as at most 1, and not at all from 0 down.
    [[nodiscard]] double fraction() const { return m_fraction; }
    void setFraction(double fraction);

    /// Whole seconds shown at the centre.
    [[nodiscard]] qint64 secondsLeft() const { return m_secondsLeft; }
    void setSecondsLeft(qint64 secondsLeft);

    /// The size of everything drawn, relative to its size in a view of 150 x 150.
    void setScale(qreal scale);

    /// The seconds of a whole break, for screen readers; nothing is drawn of it.
    [[nodiscard]] qint64 length() const { return m_length; }
    void setLength(qint64 seconds) { m_length = seconds; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] qreal radius() const;
    [[nodiscard]] QPointF toView(QPointF point) const;
    [[nodiscard]] QRect lastQuarter() const;
    [[nodiscard]] QRect numberArea() const;
    void prepareTrack(const QTransform &toScreen);
    void paintArc(QPainter &painter) const;
    void paintNumber(QPainter &painter) const;

    QImage m_track; ///< In pixels of the screen.
    QTransform m_trackTransform;
    qreal m_scale = 1;
    double m_fraction = 1.0;
    qint64 m_secondsLeft = 20;
    qint64 m_length = 20;
};
