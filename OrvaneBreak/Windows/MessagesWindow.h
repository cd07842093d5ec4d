// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "MessageArchive.h"

#include <QMainWindow>
#include <QPlainTextEdit>
#include <QPointer>

#include <functional>

/// A field for a few lines that Return sends; Shift+Return breaks the line.
class ReplyField final : public QPlainTextEdit
{
    Q_OBJECT

public:
    /// Called when Return is pressed.
    std::function<void()> onReturn;

protected:
    void keyPressEvent(QKeyEvent *event) override;
};

/// The conversation with the makers, newest first, and below it a field to reply. Its content is replaced as
/// a whole; what was typed and not sent is lost then.
class MessagesWindow final : public QMainWindow
{
    Q_OBJECT

public:
    MessagesWindow();

    /// Called for "Envoyer" and for Return in the field.
    std::function<void()> onSend;

    /// Fills the window with `history`, newest first, and an empty field with the keyboard, and puts it in
    /// the middle of its screen.
    void display(const QList<ArchivedMessage> &history);

    /// What stands in the field.
    [[nodiscard]] QString reply() const;

    void clearReply();

private:
    void addReplyField(QWidget &content);
    void addReplyRow(QWidget &content) const;
    void send() const;

    QPointer<QWidget> m_content;
    QPointer<ReplyField> m_replyField;
};
