// SPDX-License-Identifier: GPL-3.0-or-later
#include "Windows/MainWindow.h"

#include <QAction>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenuBar>
#include <QScreen>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize contentSize(430, 500);

} // namespace

MainWindow::MainWindow(std::unique_ptr<QMenuBar> menuBar)
    : m_content(new QWidget)
{
    setObjectName(u"mainWindow"_s);
    setWindowTitle(u"OrvaneBreak"_s);
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    m_content->setObjectName(u"content"_s);
    m_content->setFixedSize(contentSize);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->setMenuBar(menuBar.release());
    layout->addWidget(m_content);
    layout->activate();
    auto *close = new QAction(this);
    close->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    connect(close, &QAction::triggered, this, &QWidget::close);
    addAction(close);
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}

void MainWindow::addPage(QWidget *page)
{
    page->setParent(m_content);
    page->setGeometry(m_content->rect());
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool isBack = event->key() == Qt::Key_Escape || event->matches(QKeySequence::Back);
    if (isReturn && onReturn)
        onReturn();
    else if (isBack && onBack)
        onBack();
    else
        QWidget::keyPressEvent(event);
}
