// SPDX-License-Identifier: GPL-3.0-or-later
// "Another program" of whatever desktop it runs on: a window of one colour with a text field that has the
// keyboard when the window has it. Prints a line for everything that happens to it. Usage: field-window TITLE
// RRGGBB X,Y,WIDTH,HEIGHT [full-screen]
#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

void say(const QString &line)
{
    std::puts(qPrintable(line));
    std::fflush(stdout);
}

class FieldWindow : public QWidget
{
public:
    FieldWindow(const QColor &colour, bool isFullScreen)
        : m_colour(colour)
        , m_field(new QLineEdit(this))
    {
        m_field->setGeometry(20, 20, 180, 28);
        m_field->installEventFilter(this);
        m_field->setFocus();
        // Nothing in a full-screen window looks different when another window has the keyboard.
        m_field->setHidden(isFullScreen);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress)
            say(u"key %1"_s.arg(static_cast<QKeyEvent *>(event)->key(), 0, 16));
        return QWidget::eventFilter(watched, event);
    }

    void mousePressEvent(QMouseEvent * /*event*/) override { say(u"click"_s); }

    void contextMenuEvent(QContextMenuEvent *event) override
    {
        auto *menu = new QMenu(this);
        menu->addAction(u"Entry"_s);
        connect(menu, &QMenu::aboutToHide, this, [] { say(u"menu closed"_s); });
        menu->popup(event->globalPos());
        say(u"menu open"_s);
    }

    void paintEvent(QPaintEvent * /*event*/) override
    {
        QPainter(this).fillRect(rect(), m_colour);
        if (!m_isPainted)
            say(u"window"_s);
        m_isPainted = true;
    }

    void changeEvent(QEvent *event) override
    {
        if (event->type() == QEvent::ActivationChange)
            say(isActiveWindow() ? u"focus in"_s : u"focus out"_s);
        QWidget::changeEvent(event);
    }

private:
    QColor m_colour;
    QLineEdit *m_field;
    bool m_isPainted = false;
};

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QStringList words = QApplication::arguments();
    if (words.size() < 4) {
        std::fputs("usage: field-window TITLE RRGGBB X,Y,WIDTH,HEIGHT [full-screen]\n", stderr);
        return 2;
    }
    // A caret that blinks would make two pictures of the same window differ.
    QApplication::setCursorFlashTime(0);
    QApplication::setDesktopFileName(u"field-window"_s);
    const bool isFullScreen = words.contains(u"full-screen"_s);
    FieldWindow window(QColor(u'#' + words[2]), isFullScreen);
    window.setWindowTitle(words[1]);
    const QStringList place = words[3].split(u',');
    const QPoint corner(place.value(0).toInt(), place.value(1).toInt());
    const QSize size(place.value(2).toInt(), place.value(3).toInt());
    if (isFullScreen) {
        if (QScreen *screen = QGuiApplication::screenAt(corner))
            window.setScreen(screen);
        window.showFullScreen();
    } else {
        window.setFixedSize(size);
        window.move(corner);
        window.show();
    }
    return QApplication::exec();
}
