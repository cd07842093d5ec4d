// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/// A faint rounded panel behind controls, in shades of the label colour.
class Card final : public QWidget
{
    Q_OBJECT

protected:
    void paintEvent(QPaintEvent *event) override;
};

/// A thin line in a shade of the label colour.
class Separator final : public QWidget
{
    Q_OBJECT

protected:
    void paintEvent(QPaintEvent *event) override;
};
