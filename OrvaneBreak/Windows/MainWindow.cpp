// SPDX-License-Identifier: GPL-3.0-or-later
#include "MainWindow.h"

#include "Palette.h"

#include <QAction>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// The window manager's title bar and borders, whose size is known only once the window is shown.
constexpr int frameHeight = 40;
constexpr int lowestContent = 200;

constexpr int noteTop = 14;
constexpr int noteHeight = 18;

} // namespace

MainWindow::MainWindow(std::unique_ptr<QMenuBar> menuBar, QSize contentSize)
    : m_contentSize(contentSize)
    , m_content(new QWidget)
    , m_scroll(new QScrollArea)
    , m_note(makeLabel(QString(), 11, QFont::Normal, secondaryLabelColor()))
{
    setObjectName(u"mainWindow"_s);
    setWindowTitle(u"OrvaneBreak"_s);
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    m_content->setObjectName(u"content"_s);
    m_note->setObjectName(u"note"_s);
    m_note->setParent(m_content);
    m_note->setGeometry(0, noteTop, contentSize.width(), noteHeight);
    m_note->hide();
    setMenuBar(menuBar.release());
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setFocusPolicy(Qt::NoFocus);
    m_scroll->setWidget(m_content);
    setCentralWidget(m_scroll);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
    fitToScreen();
    layout()->activate();
    // A shortcut, because focused buttons handle the arrow keys before keyPressEvent() is called.
    addAction({}, Qt::ALT | Qt::Key_Left, this, &MainWindow::goBack);
    addAction({}, QKeySequence(Qt::Key_F10), this, [this] {
        if (this->menuBar()->isVisible())
            this->menuBar()->setActiveAction(this->menuBar()->actions().constFirst());
    });
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}

void MainWindow::addPage(QWidget *page)
{
    page->setParent(m_content);
    page->setVisible(m_pages.isEmpty());
    m_pages.append(page);
    m_note->raise();
    fitToScreen();
}

void MainWindow::showPage(QWidget *page)
{
    m_pages.move(m_pages.indexOf(page), 0);
    for (QWidget *each : std::as_const(m_pages))
        each->setVisible(each == page);
    fitToScreen();
}

void MainWindow::setNote(const QString &note)
{
    m_note->setText(note);
    m_note->setVisible(!note.isEmpty());
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    auto *button = qobject_cast<QPushButton *>(focusWidget());
    if (isReturn && button && showsFocus(*button))
        button->click();
    else if (isReturn && onReturn)
        onReturn();
    else if (event->key() == Qt::Key_Escape)
        goBack();
    else
        QMainWindow::keyPressEvent(event);
}

void MainWindow::showEvent(QShowEvent *event)
{
    fitToScreen();
    QMainWindow::showEvent(event);
}

void MainWindow::fitToScreen()
{
    const int room = screen()->availableGeometry().height() - menuBar()->sizeHint().height() - frameHeight;
    const bool isTooLow = room < m_contentSize.height();
    const int height = isTooLow ? std::max(room, lowestContent) : m_contentSize.height();
    const int minimum = m_pages.isEmpty() ? 0 : m_pages.constFirst()->minimumHeight();
    m_content->setFixedSize(m_contentSize.width(),
                            minimum > 0 ? std::max(height, minimum) : m_contentSize.height());
    for (QWidget *page : std::as_const(m_pages))
        page->setGeometry(m_content->rect());
    const int scrollBarWidth = isTooLow ? style()->pixelMetric(QStyle::PM_ScrollBarExtent) : 0;
    m_scroll->setFixedSize(m_contentSize.width() + scrollBarWidth, height);
}

void MainWindow::goBack() const
{
    if (onBack)
        onBack();
}
