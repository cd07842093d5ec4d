// SPDX-License-Identifier: GPL-3.0-or-later
#include "Windows/MainWindow.h"

#include <QAction>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QMenuBar>
#include <QScreen>

using namespace Qt::StringLiterals;

MainWindow::MainWindow(std::unique_ptr<QMenuBar> menuBar, QSize contentSize)
    : m_content(new QWidget)
{
    setObjectName(u"mainWindow"_s);
    setWindowTitle(u"OrvaneBreak"_s);
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    m_content->setObjectName(u"content"_s);
    m_content->setFixedSize(contentSize);
    setMenuBar(menuBar.release());
    setCentralWidget(m_content);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
    layout()->activate();
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
        QMainWindow::keyPressEvent(event);
}
