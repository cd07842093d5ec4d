// SPDX-License-Identifier: GPL-3.0-or-later
#include "MessagesWindow.h"

#include "AccentButton.h"
#include "Card.h"
#include "Palette.h"
#include "TextView.h"

#include <QAction>
#include <QKeyEvent>
#include <QLocale>
#include <QScreen>
#include <QScrollArea>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize windowSize(460, 520);
constexpr int conversationHeight = 416;
constexpr int margin = 22;
constexpr int contentWidth = windowSize.width() - 2 * margin;
constexpr int contentRight = margin + contentWidth;
constexpr int emptyTextTop = 60;
constexpr int firstEntryTop = 20;

QString headerText(const ArchivedMessage &entry)
{
    // In the user's time zone, and in French whatever the system's language.
    const QString date = QLocale(QLocale::French, QLocale::France)
                             .toString(entry.date.toLocalTime(), u"d MMMM yyyy 'à' HH'h'mm"_s);
    return (entry.mine ? u"Toi · "_s : u"Orvane Labs · "_s) + date;
}

QWidget *makeEmptyConversation()
{
    auto *view = new FlippedView;
    view->resize(windowSize.width(), conversationHeight);
    AppearanceLabel *label =
        makeLabel(u"Aucun message pour l'instant.\nLes réponses de Orvane Labs apparaîtront ici."_s, 13,
                  QFont::Normal, secondaryLabelColor());
    label->setParent(view);
    label->setObjectName(u"emptyLabel"_s);
    label->adjustSize();
    label->move((windowSize.width() - label->width()) / 2, emptyTextTop);
    return view;
}

/// Lays out an entry at `top`; returns the top of the next one.
int addEntry(QWidget &view, const ArchivedMessage &entry, int top)
{
    AppearanceLabel *header =
        makeLabel(headerText(entry), 11, QFont::Medium, entry.mine ? tertiaryLabelColor() : orvaneMauve());
    header->setParent(&view);
    header->setObjectName(u"messageHeader"_s);
    header->setAlignment(Qt::AlignLeft);
    header->adjustSize();
    header->move(margin, top);
    top += header->height() + 5;

    auto *body = new TextView(entry.body, contentWidth, entry.mine ? secondaryLabelColor() : labelColor());
    body->setParent(&view);
    body->setObjectName(u"messageBody"_s);
    body->setAccessibleName(header->text());
    body->move(margin, top);
    top += body->height() + 16;

    auto *line = new Separator;
    line->setParent(&view);
    line->setGeometry(margin, top, contentWidth, 1);
    return top + 18;
}

QWidget *makeConversation(const QList<ArchivedMessage> &history)
{
    if (history.isEmpty())
        return makeEmptyConversation();
    auto *view = new FlippedView;
    int top = firstEntryTop;
    for (const ArchivedMessage &entry : history)
        top = addEntry(*view, entry, top);
    view->resize(windowSize.width(), std::max(top + 10, conversationHeight));
    return view;
}

QScrollArea *makeScrollView(QWidget *document)
{
    document->setObjectName(u"conversation"_s);
    auto *view = new QScrollArea;
    view->setObjectName(u"conversationScroll"_s);
    view->setFrameShape(QFrame::NoFrame);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->viewport()->setAutoFillBackground(false);
    view->setWidget(document);
    document->setAutoFillBackground(false);
    view->setFocusPolicy(Qt::StrongFocus);
    view->setAccessibleName(u"Messages"_s);
    return view;
}

bool isPlainReturn(const QKeyEvent &event)
{
    const bool isReturn = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    return isReturn && !(event.modifiers() & Qt::ShiftModifier);
}

} // namespace

void ReplyField::keyPressEvent(QKeyEvent *event)
{
    if (isPlainReturn(*event))
        event->ignore();
    else
        WritingField::keyPressEvent(event);
}

void MessagesWindow::keyPressEvent(QKeyEvent *event)
{
    if (isPlainReturn(*event))
        send();
    else
        QMainWindow::keyPressEvent(event);
}

MessagesWindow::MessagesWindow()
{
    setObjectName(u"messagesWindow"_s);
    setWindowTitle(u"Messages de Orvane Labs"_s);
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    setFixedSize(windowSize);
}

void MessagesWindow::display(const QList<ArchivedMessage> &history)
{
    if (m_content) {
        m_content->hide();
        m_content->deleteLater();
    }
    auto *content = new QWidget(this);
    m_content = content;
    content->resize(windowSize);
    QScrollArea *scroll = makeScrollView(makeConversation(history));
    scroll->setParent(content);
    scroll->setGeometry(0, 0, windowSize.width(), conversationHeight);
    auto *line = new Separator;
    line->setParent(content);
    line->setGeometry(0, conversationHeight, windowSize.width(), 1);
    addReplyField(*content);
    addReplyRow(*content);
    content->show();
    m_replyField->setFocus();
    move(screen()->availableGeometry().center() - rect().center());
}

void MessagesWindow::addReplyField(QWidget &content)
{
    auto *field = new ReplyField;
    m_replyField = field;
    field->setParent(&content);
    field->setObjectName(u"replyField"_s);
    field->setPlaceholderText(u"Écris ta réponse ici"_s);
    field->setAccessibleName(field->placeholderText());
    field->setFont(systemFont(13, QFont::Normal));
    field->setTabChangesFocus(true);
    // Leaves room for two whole lines.
    field->document()->setDocumentMargin(2);
    field->setGeometry(margin, 428, contentWidth, 40);
}

void MessagesWindow::addReplyRow(QWidget &content)
{
    auto *button = new AccentButton(u"Envoyer"_s, orvaneMauveFixed);
    button->setParent(&content);
    button->setObjectName(u"sendButton"_s);
    button->adjustSize();
    button->move(contentRight - button->width(), windowSize.height() - 14 - button->height());
    connect(button, &QPushButton::clicked, this, &MessagesWindow::send);

    const QString usual = u"Ta réponse arrive directement chez Orvane Labs."_s;
    AppearanceLabel *note = makeLabel(usual, 11, QFont::Normal, tertiaryLabelColor());
    note->setParent(&content);
    note->setObjectName(u"replyNote"_s);
    note->setAlignment(Qt::AlignLeft);
    note->adjustSize();
    note->move(margin, windowSize.height() - 20 - note->height());
    connect(m_replyField, &WritingField::limitChecked, note, [note, usual](bool isExceeded) {
        note->setText(isExceeded ? WritingField::limitText() : usual);
        note->adjustSize();
    });
}

void MessagesWindow::send() const
{
    if (onSend && !m_replyField->isTooLong())
        onSend();
}

QString MessagesWindow::reply() const
{
    return m_replyField ? m_replyField->text() : QString();
}

void MessagesWindow::clearReply()
{
    if (m_replyField)
        m_replyField->clear();
}

void MessagesWindow::restoreReply(const QString &text)
{
    if (m_replyField && m_replyField->document()->isEmpty())
        m_replyField->setPlainText(text);
}
