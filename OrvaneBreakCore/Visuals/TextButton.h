// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Palette.h"

#include <QMargins>
#include <QPushButton>

/// A button that looks like a link: text only, brighter under the pointer, with the pointing-hand cursor.
class TextButton final : public QPushButton
{
    Q_OBJECT

public:
    /// `padding` around the text belongs to the button as well.
    TextButton(const QString &text, const QFont &font, const AppearanceColor &color, QMargins padding);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    AppearanceColor m_color;
    QMargins m_padding;
};
