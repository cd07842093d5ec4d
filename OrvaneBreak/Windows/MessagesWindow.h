// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "MessageArchive.h"
#include "WritingField.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>

/// A text field that leaves Return to its window; Shift+Return inserts a line break.
class ReplyField final : public WritingField
{
    Q_OBJECT

protected:
    void keyPressEvent(QKeyEvent *event) override;
};

/// The conversation with the makers, newest first, above a reply field.
class MessagesWindow final : public QMainWindow
{
    Q_OBJECT

public:
    MessagesWindow();

    /// Called for "Envoyer" and for Return, unless the reply is too long, which the window says.
    std::function<void()> onSend;

    /// Shows `history`, newest first, and an empty reply field with the focus, discarding an unsent reply,
    /// and centres the window on its screen.
    void display(const QList<ArchivedMessage> &history);

    /// The exact text of the reply field.
    [[nodiscard]] QString reply() const;

    void clearReply();

    /// Puts a reply that was not sent back into the field, unless the user has begun another one.
    void restoreReply(const QString &text);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void addReplyField(QWidget &content);
    void addReplyRow(QWidget &content);
    void send() const;

    QPointer<QWidget> m_content;
    QPointer<ReplyField> m_replyField;
};
