// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Palette.h"

#include <QPushButton>

/// A button without a border that shows one symbol. Its name is its accessible name and its tool tip. An
/// unknown symbol leaves it empty.
class SymbolButton final : public QPushButton
{
    Q_OBJECT

public:
    /// `size` is the size of the symbol in device-independent pixels.
    SymbolButton(const QString &symbol, qreal size, const QString &name);

    void setTint(const AppearanceColor &tint);
    [[nodiscard]] const AppearanceColor &tint() const { return m_tint; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_symbol;
    qreal m_size;
    AppearanceColor m_tint = secondaryLabelColor();
};
