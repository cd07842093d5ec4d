// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/AppDelegate.h"
#include "Platform/Windowing/WindowPresence.h"
#include "Visuals/Palette.h"
#include "Visuals/SymbolButton.h"

#include <QAction>
#include <QDesktopServices>
#include <QUrl>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize messagesWindowSize(460, 520);
constexpr int emptyTextTop = 60;

} // namespace

void AppDelegate::refreshMessageBadges()
{
    if (m_messagesBadge)
        m_messagesBadge->hide();
    if (m_messagesButton)
        m_messagesButton->setTint(secondaryLabelColor());
    if (m_appMessagesItem)
        m_appMessagesItem->setVisible(false);
    if (m_statusController.isEnabled())
        m_statusController.enable(buildStatusMenu());
}

void AppDelegate::showMessages()
{
    if (!m_messagesWindow) {
        m_messagesWindow = std::make_unique<QWidget>();
        m_messagesWindow->installEventFilter(this);
        m_messagesWindow->setObjectName(u"messagesWindow"_s);
        m_messagesWindow->setWindowTitle(u"Messages de Orvane Labs"_s);
        m_messagesWindow->setFixedSize(messagesWindowSize);
        auto *layout = new QVBoxLayout(m_messagesWindow.get());
        layout->setContentsMargins(0, emptyTextTop, 0, 0);
        layout->addWidget(
            makeLabel(u"Aucun message pour l'instant.\nLes réponses de Orvane Labs apparaîtront ici."_s, 13,
                      QFont::Normal, secondaryLabelColor()),
            0, Qt::AlignTop);
        m_presence.adopt(*m_messagesWindow);
    }
    m_presence.bringToFront(*m_messagesWindow);
}

void AppDelegate::reportProblemPressed()
{
    QUrl address(u"mailto:"_s + QStringLiteral(ORVANE_SUPPORT_EMAIL));
    address.setQuery(u"subject=OrvaneBreak"_s);
    QDesktopServices::openUrl(address);
}
