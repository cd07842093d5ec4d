// SPDX-License-Identifier: GPL-3.0-or-later
#include "MainWindow.h"

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
    addAction({}, Qt::CTRL | Qt::Key_W, this, &QWidget::close);
    // A shortcut, because focused buttons handle the arrow keys before keyPressEvent() is called.
    addAction({}, Qt::ALT | Qt::Key_Left, this, &MainWindow::goBack);
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
    if (isReturn && onReturn)
        onReturn();
    else if (event->key() == Qt::Key_Escape)
        goBack();
    else
        QMainWindow::keyPressEvent(event);
}

void MainWindow::goBack() const
{
    if (onBack)
        onBack();
}
