// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>

#include <functional>
#include <memory>

class QMenuBar;

/// The main window: the menu bar, unless the desktop shows it elsewhere, above a content of fixed size with
/// one page visible at a time. It is hidden and shown, never rebuilt.
class MainWindow final : public QMainWindow
{
    Q_OBJECT

public:
    /// Takes ownership of the menu bar; `contentSize` is in device-independent pixels, without menu bar and
    /// frame.
    MainWindow(std::unique_ptr<QMenuBar> menuBar, QSize contentSize);

    /// Adds a page that fills the content; the window owns it.
    void addPage(QWidget *page);

    /// Called when Return is pressed, unless the focused widget handles it.
    std::function<void()> onReturn;

    /// Called for Escape and Alt+Left.
    std::function<void()> onBack;

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void goBack() const;

    QWidget *m_content;
};
