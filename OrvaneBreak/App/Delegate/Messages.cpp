// SPDX-License-Identifier: GPL-3.0-or-later
#include "Alert.h"
#include "AlertQueue.h"
#include "AppDelegate.h"
#include "BreakEngine.h"
#include "LauncherCount.h"
#include "MainWindow.h"
#include "MessagesWindow.h"
#include "Palette.h"
#include "ReportForm.h"
#include "ServerChannel.h"
#include "SymbolButton.h"
#include "WindowPresence.h"

#include <QAction>
#include <QPointer>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

constexpr qreal badgeDiameter = 14;

} // namespace

void AppDelegate::syncWithServer()
{
    m_channel.checkWithServer([self = QPointer(this)] {
        if (self)
            self->showPendingMessageIfSafe();
    });
}

void AppDelegate::refreshMessageBadges()
{
    const bool isPending = m_channel.pendingMessage().has_value();
    m_launcherCount.setCount(isPending ? 1 : 0);
    m_messagesBadge->setPixmap(isPending ? QPixmap::fromImage(quotaBadgeImage(
                                               1, badgeDiameter, m_messagesBadge->devicePixelRatioF()))
                                         : QPixmap());
    m_messagesBadge->setVisible(isPending);
    m_messagesButton->setTint(isPending ? accentColor() : secondaryLabelColor());
    m_messagesButton->setAccessibleDescription(isPending ? u"Message de Orvane Labs"_s
                                                         : u"Conversation avec Orvane Labs"_s);
    m_appMessagesItem->setVisible(isPending);
    if (m_statusController.isEnabled())
        m_statusController.enable(buildStatusMenu());
}

void AppDelegate::showPendingMessageIfSafe()
{
    refreshMessageBadges();
    const bool isSafe = !m_engine.isOnBreak() && m_mainWindow->isVisible() && !m_mainWindow->isMinimized();
    // An open or waiting dialog may show this very message.
    m_isMessageHeldBack = isSafe && m_alerts.isBusy();
    if (isSafe && !m_isMessageHeldBack)
        showPendingMessage();
}

void AppDelegate::showPendingMessage()
{
    if (!m_channel.pendingMessage())
        return;
    const ServerMessage message = *m_channel.pendingMessage();
    showAlert(u"messageAlert"_s, u"Message de Orvane Labs"_s, message.text, u"Compris"_s, [this, message] {
        // A check-in may have replaced the pending message meanwhile.
        m_channel.markMessageShown(message);
        refreshMessageBadges();
    });
}

void AppDelegate::showMessages()
{
    if (m_channel.pendingMessage()) {
        m_channel.markMessageShown();
        refreshMessageBadges();
    }
    if (!m_messagesWindow) {
        m_messagesWindow = std::make_unique<MessagesWindow>();
        m_messagesWindow->installEventFilter(this);
        m_messagesWindow->onSend = [this] { sendReply(); };
        addShortcuts(*m_messagesWindow);
        m_presence.adopt(*m_messagesWindow);
    }
    m_messagesWindow->display(m_channel.messageHistory());
    m_presence.bringToFront(*m_messagesWindow);
}

void AppDelegate::sendReply()
{
    const QString text = m_messagesWindow ? m_messagesWindow->reply().trimmed() : QString();
    if (text.isEmpty())
        return;
    m_messagesWindow->clearReply();
    if (!m_unsentReplies.removeOne(text))
        m_channel.archiveOwn(text);
    showMessages();
    m_channel.reportProblem(text, QString(), [self = QPointer(this), text](bool isAccepted) {
        if (!self || isAccepted)
            return;
        self->m_unsentReplies.append(text);
        self->m_messagesWindow->restoreReply(text);
        self->showAlert(
            u"replyFailed"_s, u"Envoi impossible"_s,
            u"Ta réponse n'a pas pu partir (réseau ?). Elle reste affichée ici, réessaie plus tard "
            "ou écris à "_s +
                QStringLiteral(ORVANE_SUPPORT_EMAIL) + u'.');
    });
}

void AppDelegate::reportProblemPressed()
{
    auto form = std::make_unique<ReportForm>(m_unsentReport.text, m_unsentReport.email);
    const ReportForm *filled = form.get();
    m_alerts.add(std::move(form), [this, filled](int result) {
        if (filled->text().isEmpty())
            m_unsentReport = {};
        else if (result == QDialog::Accepted)
            sendReport(filled->text(), filled->email());
    });
}

void AppDelegate::sendReport(const QString &text, const QString &email)
{
    m_unsentReport = {};
    m_channel.reportProblem(text, email, [self = QPointer(this), text, email](bool isAccepted) {
        if (!self)
            return;
        if (isAccepted) {
            self->showAlert(u"reportSent"_s, u"Merci !"_s,
                            u"Ton signalement est bien parti. La réponse arrivera dans l'app."_s);
            return;
        }
        self->m_unsentReport = {text, email};
        self->showAlert(u"reportFailed"_s, u"Envoi impossible"_s,
                        u"Impossible d'envoyer pour le moment (réseau ?). Réessaie plus tard ou écris à "_s +
                            QStringLiteral(ORVANE_SUPPORT_EMAIL) + u'.');
    });
}

void AppDelegate::showAlert(const QString &name, const QString &message, const QString &information,
                            const QString &button, const std::function<void()> &dismissed)
{
    auto alert = std::make_unique<Alert>(name, message, information);
    alert->addDefaultButton(button);
    m_alerts.add(
        std::move(alert),
        [dismissed](int /*result*/) {
            if (dismissed)
                dismissed();
        },
        AlertQueue::Attention::Unasked);
}
