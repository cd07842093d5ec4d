// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCheckBox>

/// A check box with a frame that is visible on light and dark windows, filled with the accent of the breaks
/// while checked.
class AccentCheckBox final : public QCheckBox
{
    Q_OBJECT

public:
    explicit AccentCheckBox(const QString &title);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    [[nodiscard]] bool hitButton(const QPoint &place) const override;
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] QRectF indicator() const;
    void paintIndicator(QPainter &painter) const;
};
