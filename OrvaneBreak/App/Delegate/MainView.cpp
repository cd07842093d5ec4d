// SPDX-License-Identifier: GPL-3.0-or-later
#include "AccentButton.h"
#include "AppDelegate.h"
#include "Palette.h"
#include "SymbolButton.h"

#include <QApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int iconSize = 92;
constexpr int cornerMargin = 14;
constexpr int cornerButtonSize = 30;
constexpr int badgeSize = 14;

/// Leaves the buttons in the corner below the column.
constexpr int lowestMainView = 390;

/// How far the column is above the centre, in device-independent pixels.
constexpr int columnLift = 4;

QLabel *applicationIconView()
{
    const QIcon icon = QApplication::windowIcon();
    if (icon.isNull())
        qFatal("the application has no icon");
    auto *view = new QLabel;
    view->setFixedSize(iconSize, iconSize);
    view->setPixmap(icon.pixmap(QSize(iconSize, iconSize), qApp->devicePixelRatio()));
    view->setObjectName(u"applicationIcon"_s);
    view->setAccessibleName(u"OrvaneBreak"_s);
    return view;
}

} // namespace

QWidget *AppDelegate::buildMainView()
{
    auto *root = new QWidget;
    root->setObjectName(u"mainView"_s);
    root->resize(winSize);
    root->setMinimumHeight(lowestMainView);

    auto *title = makeLabel(u"OrvaneBreak"_s, 24, QFont::Bold, labelColor());
    title->setObjectName(u"title"_s);
    auto *pitch = makeLabel(u"Des pauses régulières pour tes yeux,\nla règle 20-20-20 sans y penser."_s, 13,
                            QFont::Normal, secondaryLabelColor());
    pitch->setObjectName(u"pitch"_s);

    m_breakButton = new AccentButton(u"Protéger mes yeux"_s, breakTealFixed);
    m_breakButton->setObjectName(u"breakButton"_s);
    m_breakButton->setDefault(true);
    connect(m_breakButton, &QPushButton::clicked, this, &AppDelegate::breakToggled);
    m_breakStatusLabel = makeLabel(u"Rappels désactivés"_s, 13, QFont::Normal, tertiaryLabelColor());
    m_breakStatusLabel->setObjectName(u"breakStatusLabel"_s);
    m_hintLabel = makeLabel(u"Toutes les 20 min : regarde à 6 mètres pendant 20 s"_s, 11, QFont::Normal,
                            tertiaryLabelColor());
    m_hintLabel->setObjectName(u"hintLabel"_s);

    auto *column = new QVBoxLayout;
    column->setSpacing(0);
    const std::pair<QWidget *, int> rows[] = {
        {applicationIconView(), 14}, {title, 10},     {pitch, 24}, {m_breakButton, 14},
        {m_breakStatusLabel, 8},     {m_hintLabel, 0}};
    for (const auto &[view, gap] : rows) {
        column->addWidget(view, 0, Qt::AlignHCenter);
        column->addSpacing(gap);
    }

    auto *envelope = new SymbolButton(u"envelope.fill"_s, 15, u"Messages"_s);
    envelope->setObjectName(u"messagesButton"_s);
    envelope->setFixedSize(cornerButtonSize, cornerButtonSize);
    connect(envelope, &QPushButton::clicked, this, &AppDelegate::showMessages);
    m_messagesButton = envelope;
    m_messagesBadge = new BadgeImageView(envelope);
    m_messagesBadge->setObjectName(u"messagesBadge"_s);
    m_messagesBadge->setGeometry(cornerButtonSize - badgeSize, 0, badgeSize, badgeSize);
    m_messagesBadge->hide();

    auto *gear = new SymbolButton(u"gearshape.fill"_s, 16, u"Réglages"_s);
    gear->setObjectName(u"settingsButton"_s);
    gear->setAccessibleDescription(u"Rythme des pauses, son et système"_s);
    gear->setFixedSize(cornerButtonSize, cornerButtonSize);
    connect(gear, &QPushButton::clicked, this, &AppDelegate::showSettings);

    auto *corner = new QHBoxLayout;
    corner->setContentsMargins(0, 0, cornerMargin, cornerMargin);
    corner->setSpacing(4);
    corner->addWidget(envelope);
    corner->addWidget(gear);

    auto *middle = new QVBoxLayout;
    middle->setContentsMargins(0, 0, 0, 2 * columnLift);
    middle->addStretch();
    middle->addLayout(column);
    middle->addStretch();

    auto *layers = new QGridLayout(root);
    layers->setContentsMargins(0, 0, 0, 0);
    layers->addLayout(middle, 0, 0);
    layers->addLayout(corner, 0, 0, Qt::AlignRight | Qt::AlignBottom);
    return root;
}
