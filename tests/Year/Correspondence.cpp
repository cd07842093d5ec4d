// SPDX-License-Identifier: GPL-3.0-or-later
// Messages, replies, reports and updates.
#include "Support/MessagesFixture.h"
#include "Year.h"

#include <QLineEdit>
#include <QPlainTextEdit>

#include <array>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

/// The date in French, computed with the C library's calendar.
QString dateText(qint64 seconds)
{
    static const std::array<QString, 12> months{u"janvier"_s,   u"février"_s, u"mars"_s,     u"avril"_s,
                                                u"mai"_s,       u"juin"_s,    u"juillet"_s,  u"août"_s,
                                                u"septembre"_s, u"octobre"_s, u"novembre"_s, u"décembre"_s};
    const auto time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    tzset();
    localtime_r(&time, &parts);
    return u"%1 %2 %3 à %4h%5"_s.arg(parts.tm_mday)
        .arg(months.at(static_cast<std::size_t>(parts.tm_mon)))
        .arg(parts.tm_year + 1900)
        .arg(parts.tm_hour, 2, 10, '0'_L1)
        .arg(parts.tm_min, 2, 10, '0'_L1);
}

} // namespace

void Year::readMessages()
{
    note(u"the messages are read"_s);
    m_app->find<QPushButton>(u"messagesButton"_s)->click();
    if (m_conversation.pending)
        m_conversation.see(ServerMessage(*m_conversation.pending), clock());
    compareConversation();
    compareHeader();
}

void Year::closeMessages()
{
    QWidget *messages = m_app->window(u"messagesWindow"_s);
    if (!messages || messages->isHidden() || m_app->window()->isHidden())
        return;
    note(u"the messages are closed"_s);
    messages->close();
}

void Year::writeReply()
{
    // The layout of a long conversation is slow.
    if (pick(2))
        return;
    readMessages();
    const QString text = pick(4) ? u"Merci %1"_s.arg(m_operation) : u" \n "_s;
    note(u"a reply: "_s + text);
    Launched::inMessages<QPlainTextEdit>(u"replyField"_s)->setPlainText(text);
    Launched::inMessages<QPushButton>(u"sendButton"_s)->click();
    if (text.trimmed().isEmpty())
        return;
    m_conversation.reply(text, clock());
    if (m_conversation.pending)
        m_conversation.see(ServerMessage(*m_conversation.pending), clock());
    compareConversation();
    compareHeader();
}

void Year::reportProblem()
{
    note(u"a report"_s);
    m_app->delegate.reportProblemPressed();
}

void Year::searchUpdates()
{
    note(u"updates are looked for"_s);
    m_app->find<QPushButton>(u"updatesButton"_s)->click();
}

void Year::answerDialog()
{
    if (m_app->panel())
        return;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        auto *dialog = qobject_cast<QDialog *>(window);
        if (dialog && dialog->isVisible()) {
            answerDialog(*dialog);
            return;
        }
    }
}

void Year::answerDialog(QDialog &dialog)
{
    const QString name = dialog.objectName();
    note(u"answer to "_s + name);
    if (name == "reportForm"_L1 && pick(3)) {
        dialog.findChild<QPlainTextEdit *>()->setPlainText(u"Ça ne va pas %1"_s.arg(m_operation));
        dialog.findChild<QLineEdit *>()->setText(u"moi@exemple.ch"_s);
    }
    auto *cancel = dialog.findChild<QPushButton *>(u"alertCancel"_s);
    auto *agree = dialog.findChild<QPushButton *>(u"alertDefault"_s);
    (cancel && (!agree || pick(2)) ? cancel : agree)->click();
    if (name == "messageAlert"_L1) {
        m_conversation.see(*m_inDialog, clock());
        m_inDialog.reset();
        compareConversation();
    }
}

void Year::answerRequests()
{
    while (!m_app->http.requests.isEmpty() && !hasFailed()) {
        const FakeHttp::Request request = m_app->http.requests.constFirst();
        bool isAccepted = false;
        if (request.method == FakeHttp::Method::Get) {
            const Makers::Answer answer = Makers::answerFeed(m_random);
            note(u"answer with a feed: "_s + answer.kind);
            m_app->http.answer(answer.http);
        } else if (request.url.path().endsWith("check.php"_L1)) {
            answerCheckIn();
        } else {
            const Makers::Answer answer = Makers::answerReport(m_random, isAccepted);
            note(u"answer to a report: "_s + answer.kind);
            m_app->http.answer(answer.http);
        }
    }
}

void Year::answerCheckIn()
{
    const Makers::Answer answer = m_makers.answerCheckIn(m_app->http.requests.constFirst(), m_app->makers,
                                                         trueNow(), m_app->runLoop.now(), m_random);
    note(u"answer to a check-in: "_s + answer.kind +
         (answer.message ? u", message %1"_s.arg(answer.message->id) : QString()));
    const bool isSafe = !m_app->model.isOnBreak() && m_app->window()->isVisible() && !m_app->alerts.isBusy();
    if (answer.message)
        m_conversation.receive(*answer.message);
    m_app->http.answer(answer.http);
    if (m_app->channel.pendingMessage() != m_conversation.pending)
        fail(u"the message that waits"_s);
    if (m_app->find<QWidget>(u"messagesBadge"_s)->isHidden() == m_conversation.pending.has_value())
        fail(u"the badge"_s);
    if (!m_conversation.pending || !isSafe)
        return;
    m_inDialog = m_conversation.pending;
    const QDialog *dialog = Launched::dialog();
    if (!dialog || Launched::textOf(*dialog, u"alertInformation"_s) != m_inDialog->text)
        fail(u"the dialog with the message"_s);
}

void Year::compareConversation()
{
    const QString difference =
        m_conversation.difference(m_app->preferences.stored, m_app->channel.messageHistory());
    if (!difference.isEmpty())
        fail(difference);
}

void Year::compareHeader()
{
    settle();
    const auto *header = m_app->window(u"messagesWindow"_s)->findChild<QLabel *>(u"messageHeader"_s);
    if (m_conversation.entries.isEmpty() || !header)
        return;
    const ArchivedMessage &newest = m_conversation.entries.constLast();
    const QString expected =
        (newest.mine ? u"Toi · "_s : u"Orvane Labs · "_s) + dateText(newest.date.toSecsSinceEpoch());
    if (header->text() != expected)
        fail(u"the date \"%1\", expected \"%2\""_s.arg(header->text(), expected));
}
