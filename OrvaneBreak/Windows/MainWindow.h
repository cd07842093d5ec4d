// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QMainWindow>
#include <QSize>

#include <functional>
#include <memory>

class QLabel;
class QMenuBar;
class QScrollArea;

/// The main window: the menu bar, unless the desktop shows it elsewhere, above a content of fixed size with
/// one page visible at a time. On a screen that is too low for it the page shrinks to its minimum height, if
/// it has one, and what is still too high scrolls. The window is hidden and shown, never rebuilt.
class MainWindow final : public QMainWindow
{
    Q_OBJECT

public:
    /// Takes ownership of the menu bar; `contentSize` is in device-independent pixels, without menu bar and
    /// frame.
    MainWindow(std::unique_ptr<QMenuBar> menuBar, QSize contentSize);

    /// Adds a page that fills the content; the window owns it. The first page is shown.
    void addPage(QWidget *page);

    /// Shows `page` in place of the others.
    void showPage(QWidget *page);

    /// Shows one line above the pages; an empty one shows nothing.
    void setNote(const QString &note);

    /// Called when Return is pressed, unless the focused widget handles it. It presses a button that shows
    /// the focus.
    std::function<void()> onReturn;

    /// Called for Escape and Alt+Left.
    std::function<void()> onBack;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void goBack() const;
    void fitToScreen();

    QSize m_contentSize;
    QList<QWidget *> m_pages; ///< The first is the one that is shown.
    QWidget *m_content;
    QScrollArea *m_scroll;
    QLabel *m_note;
};
