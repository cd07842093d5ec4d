// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Palette.h"

#include <QTextEdit>

/// A plain text, wrapped at a given width and as high as its content, that can be selected and copied. Of a
/// text with more than 20,000 characters only the beginning is shown, because the layout takes too long.
class TextView final : public QTextEdit
{
    Q_OBJECT

public:
    /// `width` in device-independent pixels.
    TextView(const QString &text, int width, const AppearanceColor &color);

protected:
    void changeEvent(QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    [[nodiscard]] int heightAt(int width) const;

    AppearanceColor m_color;
};
