// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>

/// Makes the application's font this many percent as wide, for as long as it exists.
class WideFont
{
public:
    explicit WideFont(int stretch)
    {
        QFont font = m_replaced;
        font.setStretch(stretch);
        QApplication::setFont(font);
    }
    ~WideFont() { QApplication::setFont(m_replaced); }
    WideFont(const WideFont &) = delete;
    WideFont &operator=(const WideFont &) = delete;

private:
    QFont m_replaced = QApplication::font();
};
