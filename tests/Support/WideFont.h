// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFontDatabase>
#include <qpa/qplatformtheme.h>

#include <private/qguiapplication_p.h>

#include <utility>

/// Makes the desktop's own font this many percent as wide, for as long as it exists: the platform theme is
/// where the toolkit, and so the program, asks for it.
class WideFont final : public QPlatformTheme
{
public:
    explicit WideFont(int stretch)
        : m_font(QFontDatabase::systemFont(QFontDatabase::GeneralFont))
        , m_replaced(std::exchange(QGuiApplicationPrivate::platform_theme, this))
    {
        m_font.setStretch(stretch);
    }
    ~WideFont() override { QGuiApplicationPrivate::platform_theme = m_replaced; }
    WideFont(const WideFont &) = delete;
    WideFont &operator=(const WideFont &) = delete;

    [[nodiscard]] const QFont *font(Font type) const override
    {
        return type == SystemFont ? &m_font : m_replaced->font(type);
    }

private:
    QFont m_font;
    QPlatformTheme *m_replaced;
};
