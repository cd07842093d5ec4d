// SPDX-License-Identifier: GPL-3.0-or-later
// The smallest program of this kind, as the reference for bench/run: one window, a tray icon and a one-minute
// timer. With --ring it is a translucent window over the whole screen instead, with a ring that is painted
// ten times a second.
#include <QApplication>
#include <QLabel>
#include <QPaintEvent>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QWidget>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

constexpr QSize windowSize(430, 500);
constexpr int ringSize = 150;
constexpr qreal lineWidth = 10;
constexpr int ringSteps = 600;

class RingWindow final : public QWidget
{
public:
    RingWindow()
        : QWidget(nullptr, Qt::BypassWindowManagerHint | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    {
        setAttribute(Qt::WA_TranslucentBackground);
        setGeometry(QGuiApplication::primaryScreen()->geometry());
        m_ring = QRect(0, 0, ringSize, ringSize);
        m_ring.moveCenter(rect().center());
    }

    void step()
    {
        m_step = (m_step + 1) % ringSteps;
        update(m_ring);
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QPainter painter(this);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(event->rect(), QColor(0, 0, 0, 191));
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF circle = QRectF(m_ring).adjusted(lineWidth, lineWidth, -lineWidth, -lineWidth);
        painter.setPen(QPen(QColor(255, 255, 255, 38), lineWidth));
        painter.drawEllipse(circle);
        painter.setPen(QPen(QColor(45, 212, 191), lineWidth, Qt::SolidLine, Qt::RoundCap));
        painter.drawArc(circle, 90 * 16, -360 * 16 * (ringSteps - m_step) / ringSteps);
    }

private:
    QRect m_ring;
    int m_step = 0;
};

int showRing()
{
    RingWindow window;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &window, &RingWindow::step);
    timer.start(100ms);
    window.show();
    return QApplication::exec();
}

int showWindow()
{
    QLabel window(u"0"_s);
    window.setAlignment(Qt::AlignCenter);
    window.setWindowTitle(u"Reference"_s);
    window.setFixedSize(windowSize);
    QPixmap picture(32, 32);
    picture.fill(Qt::darkCyan);
    QSystemTrayIcon icon{QIcon(picture)};
    QTimer timer;
    timer.setTimerType(Qt::VeryCoarseTimer);
    int minutes = 0;
    QObject::connect(&timer, &QTimer::timeout, [&] { window.setText(QString::number(++minutes)); });
    timer.start(1min);
    window.show();
    icon.show();
    return QApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    return QApplication::arguments().contains(u"--ring"_s) ? showRing() : showWindow();
}
