// SPDX-License-Identifier: GPL-3.0-or-later
#include "TextView.h"

#include <QTextDocument>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr qreal fontSize = 13;

} // namespace

TextView::TextView(const QString &text, int width, const AppearanceColor &color)
    : m_color(color)
{
    setFrameShape(QFrame::NoFrame);
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setTabChangesFocus(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setFont(systemFont(fontSize, QFont::Normal));
    viewport()->setAutoFillBackground(false);
    document()->setDocumentMargin(0);
    setPlainText(text);
    setFixedSize(width, heightAt(width));
    applyAppearanceColor(*this, QPalette::Text, m_color);
}

int TextView::heightAt(int width) const
{
    // On a copy, because the document itself is laid out for the viewport, which has no size before it is
    // shown.
    const std::unique_ptr<QTextDocument> copy(document()->clone());
    copy->setTextWidth(width);
    return static_cast<int>(std::clamp<qreal>(std::ceil(copy->size().height()), 1, QWIDGETSIZE_MAX));
}

void TextView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        applyAppearanceColor(*this, QPalette::Text, m_color);
    QTextEdit::changeEvent(event);
}

void TextView::wheelEvent(QWheelEvent *event)
{
    // The text is fully visible, so the enclosing view scrolls instead.
    event->ignore();
}
