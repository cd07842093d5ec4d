// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>

/// A button that looks like a link: its text alone, brighter under the pointer, with a pointing hand.
class TextButton final : public QPushButton
{
    Q_OBJECT

public:
    TextButton(const QString &text, const QFont &font, const QColor &color);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;

private:
    QColor m_color;
};
