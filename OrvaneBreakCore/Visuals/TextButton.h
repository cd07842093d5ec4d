// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Palette.h"

#include <QPushButton>

/// A button that looks like a link: text only, brighter under the pointer, with the pointing-hand cursor.
class TextButton final : public QPushButton
{
    Q_OBJECT

public:
    /// `horizontalPadding` is the clickable space on each side of the text, in device-independent pixels.
    TextButton(const QString &text, const QFont &font, const AppearanceColor &color, int horizontalPadding);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    AppearanceColor m_color;
    int m_horizontalPadding;
};
