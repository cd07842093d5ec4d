// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QImage>
#include <QRegularExpression>
#include <QTest>
#include <QWidget>

#include <cstdlib>

/// Makes every warning fail the current test function, except those about features that the offscreen
/// platform lacks. For `init()`.
inline void failOnUnexpectedWarnings()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

/// The widget, painted on `background`.
inline QImage painted(QWidget &widget, const QColor &background = Qt::black, qreal devicePixelRatio = 1)
{
    QImage image(widget.size() * devicePixelRatio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(background);
    widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

/// Whether a control in the active `window` shows its focus if, and only if, the keyboard has moved it there.
inline bool showsFocusOfTheKeyboard(QWidget &window, QWidget &control)
{
    window.setAttribute(Qt::WA_KeyboardFocusChange, false);
    control.setFocus();
    const bool hasFocus = control.hasFocus();
    const QImage focusedByMouse = painted(control, Qt::white);
    window.setAttribute(Qt::WA_KeyboardFocusChange);
    const QImage focusedByKeyboard = painted(control, Qt::white);
    control.clearFocus();
    return hasFocus && painted(control, Qt::white) == focusedByMouse && focusedByKeyboard != focusedByMouse;
}

/// Whether two colours differ by at most `tolerance` in every channel.
inline bool isNear(const QColor &left, const QColor &right, int tolerance = 3)
{
    return std::abs(left.red() - right.red()) <= tolerance &&
           std::abs(left.green() - right.green()) <= tolerance &&
           std::abs(left.blue() - right.blue()) <= tolerance &&
           std::abs(left.alpha() - right.alpha()) <= tolerance;
}
