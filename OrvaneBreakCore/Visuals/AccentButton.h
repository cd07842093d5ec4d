// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>

/// A window's main button: its title on a coloured bezel, the same in both appearances.
class AccentButton final : public QPushButton
{
    Q_OBJECT

public:
    AccentButton(const QString &title, const QColor &bezel);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_bezel;
};
