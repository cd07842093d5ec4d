// SPDX-License-Identifier: GPL-3.0-or-later
#include "Alert.h"

#include "Palette.h"
#include "TextView.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int iconSize = 64;
constexpr int maxTextHeight = 320;
constexpr int scrollBarWidth = 16;

QLabel *makeIcon()
{
    auto *icon = new QLabel;
    icon->setPixmap(QApplication::windowIcon().pixmap(QSize(iconSize, iconSize), qApp->devicePixelRatio()));
    icon->setFixedSize(iconSize, iconSize);
    icon->setAccessibleName(u"OrvaneBreak"_s);
    return icon;
}

/// The whole text, or a part of it with a scroll bar if it is long.
QScrollArea *makeInformation(const QString &message, const QString &text)
{
    auto *body = new TextView(text, Alert::contentWidth - scrollBarWidth, labelColor());
    body->setObjectName(u"alertInformation"_s);
    body->setAccessibleName(message);
    body->setFocusPolicy(Qt::NoFocus);
    auto *scroll = new QScrollArea;
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(body);
    scroll->viewport()->setAutoFillBackground(false);
    scroll->setFixedSize(Alert::contentWidth, std::min(body->height(), maxTextHeight));
    if (body->height() <= maxTextHeight) {
        scroll->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scroll->setFocusPolicy(Qt::NoFocus);
    }
    return scroll;
}

} // namespace

Alert::Alert(const QString &name, const QString &message, const QString &information)
    : m_column(new QVBoxLayout)
    , m_buttons(new QDialogButtonBox)
{
    setObjectName(name);
    setWindowTitle(u"OrvaneBreak"_s);
    setAccessibleDescription(message + u'\n' + information);

    AppearanceLabel *title = makeLabel(message, 15, QFont::DemiBold, labelColor());
    title->setObjectName(u"alertMessage"_s);
    title->setAlignment(Qt::AlignLeft);
    m_column->setSpacing(8);
    m_column->addWidget(title);
    m_column->addWidget(makeInformation(message, information));

    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    m_column->addSpacing(4);
    m_column->addWidget(m_buttons);

    auto *layout = new QHBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->setContentsMargins(20, 20, 20, 16);
    layout->setSpacing(18);
    layout->addWidget(makeIcon(), 0, Qt::AlignTop);
    layout->addLayout(m_column);
}

void Alert::addAccessory(QWidget *view)
{
    // Above the buttons and their spacing.
    m_column->insertWidget(m_column->count() - 2, view);
}

void Alert::addDefaultButton(const QString &title)
{
    QPushButton *button = m_buttons->addButton(title, QDialogButtonBox::AcceptRole);
    button->setObjectName(u"alertDefault"_s);
    button->setDefault(true);
    button->setFocus();
}

void Alert::addCancelButton(const QString &title)
{
    m_buttons->addButton(title, QDialogButtonBox::RejectRole)->setObjectName(u"alertCancel"_s);
}

void Alert::addButton(const QString &title, int result)
{
    QPushButton *button = m_buttons->addButton(title, QDialogButtonBox::ActionRole);
    button->setObjectName(u"alertOther"_s);
    connect(button, &QPushButton::clicked, this, [this, result] { done(result); });
}
