// SPDX-License-Identifier: GPL-3.0-or-later
#include "WritingField.h"

#include <QMimeData>
#include <QTextDocument>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maxLength = 20'000;

} // namespace

WritingField::WritingField()
{
    connect(this, &QPlainTextEdit::textChanged, this, [this] { Q_EMIT limitChecked(isTooLong()); });
}

QString WritingField::text() const
{
    // QTextDocument::toPlainText() also turns no-break spaces into spaces.
    return document()
        ->toRawText()
        .replace(QChar(QChar::ParagraphSeparator), u'\n')
        .replace(QChar(QChar::LineSeparator), u'\n');
}

bool WritingField::isTooLong() const
{
    // The document counts the end of its last paragraph as well.
    return document()->characterCount() - 1 > maxLength;
}

QString WritingField::limitText()
{
    return u"Texte trop long\u00a0: 20\u202f000 caractères au maximum."_s;
}

void WritingField::insertFromMimeData(const QMimeData *source)
{
    const qsizetype kept = document()->characterCount() - 1 - textCursor().selectedText().size();
    if (kept + source->text().size() > maxLength)
        Q_EMIT limitChecked(true);
    else
        QPlainTextEdit::insertFromMimeData(source);
}
