// SPDX-License-Identifier: GPL-3.0-or-later
#include "TextView.h"

#include <QTextBoundaryFinder>
#include <QTextDocument>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr qreal fontSize = 13;
constexpr qsizetype maxShown = 20'000;
constexpr qsizetype maxWord = 400;

QString beginning(const QString &text)
{
    if (text.size() <= maxShown)
        return text;
    const qsizetype end = text.at(maxShown).isLowSurrogate() ? maxShown - 1 : maxShown;
    return text.first(end) + u"\n[…] Ce texte est trop long pour être affiché en entier."_s;
}

/// `text` with a zero-width space in each word that no line holds: the time for the layout grows with the
/// square of the number of characters without a place to break the line.
QString breakable(const QString &text)
{
    QString result;
    QTextBoundaryFinder lines(QTextBoundaryFinder::Line, text);
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, text);
    qsizetype begin = 0;
    for (qsizetype end = lines.toNextBoundary(); end >= 0; end = lines.toNextBoundary()) {
        while (end - begin > maxWord) {
            characters.setPosition(begin + maxWord);
            const qsizetype middle =
                characters.isAtBoundary() ? characters.position() : characters.toPreviousBoundary();
            const qsizetype next = middle > begin ? middle : begin + maxWord;
            result += QStringView(text).sliced(begin, next - begin);
            result += QChar(0x200B);
            begin = next;
        }
        result += QStringView(text).sliced(begin, end - begin);
        begin = end;
    }
    return result;
}

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
    setPlainText(breakable(beginning(text)));
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
