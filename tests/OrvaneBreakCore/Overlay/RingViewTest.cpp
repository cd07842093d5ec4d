// SPDX-License-Identifier: GPL-3.0-or-later
#include "RingView.h"

#include "BreakOverlayPanel.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QBackingStore>
#include <QPaintEvent>
#include <QTest>
#include <QtMath>

#include <private/qhighdpiscaling_p.h>

#include <utility>

namespace {

/// Over black: white at 15 %, and the arc's teal.
const QColor track(38, 38, 38);
const QColor teal(45, 212, 191);

/// The colour in the middle of the stroke, `degrees` clockwise from twelve o'clock.
QColor strokeAt(const QImage &image, qreal radius, qreal degrees)
{
    const qreal scale = image.devicePixelRatio();
    const QPointF centre = QPointF(image.width() / 2.0, image.height() / 2.0);
    const qreal angle = qDegreesToRadians(degrees);
    const QPointF point = centre + scale * radius * QPointF(qSin(angle), -qCos(angle));
    return image.pixelColor(qFloor(point.x()), qFloor(point.y()));
}

/// The smallest rectangle with everything brighter than the track inside the ring.
QRect numberBox(const QImage &image, qreal innerRadius)
{
    QRect box;
    const QPointF centre(image.width() / 2.0, image.height() / 2.0);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QPointF offset = QPointF(x + 0.5, y + 0.5) - centre;
            const bool isInside = QPointF::dotProduct(offset, offset) < innerRadius * innerRadius;
            if (isInside && image.pixelColor(x, y).lightness() > 100)
                box |= QRect(x, y, 1, 1);
        }
    }
    return box;
}

/// Paints what has been requested, which the window would do a few milliseconds later.
void paintRequested(QWidget &window)
{
    QEvent request(QEvent::UpdateRequest);
    QCoreApplication::sendEvent(&window, &request);
}

/// Collects what is painted in a window from now on.
class PaintLog : public QObject
{
public:
    explicit PaintLog(QWidget &window)
        : m_window(window)
    {
        paintRequested(window);
        window.installEventFilter(this);
    }

    /// What has been painted since the last call, with all that was requested.
    QRegion takeRegion()
    {
        paintRequested(m_window);
        return std::exchange(m_region, {});
    }

    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            m_region |= static_cast<QPaintEvent *>(event)->region();
        return false;
    }

private:
    QWidget &m_window;
    QRegion m_region;
};

QString text(const QRect &area)
{
    return QStringLiteral("%1 %2 %3 x %4").arg(area.x()).arg(area.y()).arg(area.width()).arg(area.height());
}

/// Scales the screen as long as it lives.
class ScreenScale
{
public:
    explicit ScreenScale(qreal scale) { QHighDpiScaling::setGlobalFactor(scale); }
    ~ScreenScale() { QHighDpiScaling::setGlobalFactor(1); }
    ScreenScale(const ScreenScale &) = delete;
    ScreenScale &operator=(const ScreenScale &) = delete;
};

/// What the panel's window shows of the ring, in pixels of the screen.
QImage ringImage(const BreakOverlayPanel &panel)
{
    const auto &window = *static_cast<QImage *>(panel.backingStore()->paintDevice());
    const QRectF ring(QPointF(panel.ring()->geometry().topLeft()) * panel.devicePixelRatioF(),
                      QSizeF(panel.ring()->size()) * panel.devicePixelRatioF());
    return window.copy(ring.toAlignedRect());
}

} // namespace

class RingViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnUnexpectedWarnings(); }

    void freshRingIsFullAndShows20()
    {
        RingView ring;
        ring.resize(150, 150);
        QCOMPARE(ring.fraction(), 1.0);
        QCOMPARE(ring.secondsLeft(), 20);
        QVERIFY(isNear(strokeAt(painted(ring), 65, 180), teal));
    }

    void aSmallRingHasTheSameProportions()
    {
        RingView ring;
        ring.resize(75, 75);
        ring.setScale(0.5);
        const QImage image = painted(ring);
        QVERIFY(isNear(strokeAt(image, 31, 180), teal));
        QVERIFY(isNear(strokeAt(image, 34, 180), teal));
        QVERIFY(isNear(strokeAt(image, 28, 180), Qt::black));
        QVERIFY(isNear(strokeAt(image, 36, 180), Qt::black));
        ring.resize(150, 150);
        ring.setScale(1);
        const QRect full = numberBox(painted(ring), 58);
        QVERIFY(qAbs(2 * numberBox(image, 28).height() - full.height()) <= 3);
    }

    void arc_data()
    {
        QTest::addColumn<double>("fraction");
        QTest::addColumn<QList<int>>("tealAngles");
        QTest::addColumn<QList<int>>("trackAngles");
        const QList<int> all{0, 30, 60, 85, 100, 130, 180, 225, 270, 315, 350};
        QTest::newRow("0") << 0.0 << QList<int>() << all;
        QTest::newRow("negative") << -0.5 << QList<int>() << all;
        QTest::newRow("not a number") << qQNaN() << QList<int>() << all;
        QTest::newRow("0.25") << 0.25 << QList<int>{0, 30, 60, 85}
                              << QList<int>{100, 130, 180, 225, 270, 315, 350};
        QTest::newRow("0.75") << 0.75 << QList<int>{0, 30, 60, 85, 100, 130, 180, 225, 265}
                              << QList<int>{280, 315, 350};
        QTest::newRow("1") << 1.0 << all << QList<int>();
        QTest::newRow("1.7") << 1.7 << all << QList<int>();
        QTest::newRow("infinite") << qInf() << all << QList<int>();
    }

    void arc()
    {
        QFETCH(const double, fraction);
        QFETCH(const QList<int>, tealAngles);
        QFETCH(const QList<int>, trackAngles);
        for (const qreal scale : {1.0, 1.5, 2.0}) {
            RingView ring;
            ring.resize(150, 150);
            ring.setFraction(fraction);
            const QImage image = painted(ring, Qt::black, scale);
            for (const int angle : tealAngles)
                QVERIFY2(isNear(strokeAt(image, 65, angle), teal), qPrintable(QString::number(angle)));
            for (const int angle : trackAngles)
                QVERIFY2(isNear(strokeAt(image, 65, angle), track), qPrintable(QString::number(angle)));
        }
    }

    void moreThanAllIsDrawnExactlyAsAll()
    {
        RingView ring;
        ring.resize(150, 150);
        const QImage full = painted(ring);
        ring.setFraction(1.7);
        QCOMPARE(painted(ring), full);
    }

    void strokeIsTenPixelsWide()
    {
        RingView ring;
        ring.resize(150, 150);
        const QImage image = painted(ring);
        for (const qreal radius : {61.0, 65.0, 69.0})
            QVERIFY2(isNear(strokeAt(image, radius, 180), teal, 6),
                     qPrintable(strokeAt(image, radius, 180).name()));
        for (const qreal radius : {58.0, 72.0})
            QVERIFY2(isNear(strokeAt(image, radius, 180), Qt::black),
                     qPrintable(strokeAt(image, radius, 180).name()));
    }

    void ringOfAWideViewStaysCentred()
    {
        RingView ring;
        ring.resize(200, 100);
        const QImage image = painted(ring);
        for (const int angle : {90, 180, 270, 0})
            QVERIFY(isNear(strokeAt(image, 40, angle), teal));
        QVERIFY(isNear(image.pixelColor(5, 50), Qt::black));
    }

    void number_data()
    {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<int>("digits");
        QTest::newRow("0") << qint64(0) << 1;
        QTest::newRow("5") << qint64(5) << 1;
        QTest::newRow("120") << qint64(120) << 3;
    }

    void number()
    {
        QFETCH(const qint64, seconds);
        QFETCH(const int, digits);
        RingView ring;
        ring.resize(150, 150);
        ring.setFraction(0);
        ring.setSecondsLeft(seconds);
        const QImage image = painted(ring);
        const QRect box = numberBox(image, 58);
        QVERIFY(!box.isEmpty());
        QVERIFY2(qAbs(box.center().x() - 75) <= 4, qPrintable(QString::number(box.center().x())));
        QVERIFY2(qAbs(box.center().y() - 75) <= 6, qPrintable(QString::number(box.center().y())));
        // Bold digits of 44 pixels are about 32 high and at most 34 wide.
        QVERIFY(box.height() >= 26 && box.height() <= 40);
        QVERIFY(box.width() >= 15 + (digits - 1) * 20 && box.width() <= digits * 34);
    }

    void digitsDoNotShift()
    {
        RingView ring;
        ring.resize(150, 150);
        ring.setFraction(0);
        ring.setSecondsLeft(10);
        const QImage ten = painted(ring);
        ring.setSecondsLeft(18);
        const QImage eighteen = painted(ring);
        const QRect leftDigit(30, 45, 44, 60);
        QCOMPARE(ten.copy(leftDigit), eighteen.copy(leftDigit));
        QVERIFY(ten != eighteen);
    }

    void aStepRepaintsTheQuarterWithTheEndOfTheArc()
    {
        QWidget window;
        window.resize(400, 400);
        auto *ring = new RingView(&window);
        ring->setGeometry(125, 125, 150, 150);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        PaintLog log(window);

        ring->setFraction(0.75);
        QCOMPARE(log.takeRegion(), QRegion(ring->geometry()));
        ring->setFraction(0.745);
        // The upper part of the quarter before nine o'clock, and the point itself.
        const QRect quarter = log.takeRegion().boundingRect();
        QVERIFY2(quarter.contains(QRect(129, 194, 66, 77)), qPrintable(text(quarter)));
        QVERIFY2(QRect(125, 190, 90, 85).contains(quarter), qPrintable(text(quarter)));
        ring->setSecondsLeft(19);
        const QRect number = log.takeRegion().boundingRect();
        QVERIFY2(QRect(141, 141, 118, 118).contains(number), qPrintable(text(number)));
        ring->setFraction(0);
        QCOMPARE(log.takeRegion(), QRegion(ring->geometry()));
    }

    void aValueThatChangesNoPixelRepaintsNothing()
    {
        RingView ring;
        ring.resize(150, 150);
        ring.show();
        QVERIFY(QTest::qWaitForWindowExposed(&ring));
        PaintLog log(ring);
        ring.setFraction(1);
        ring.setFraction(1.7);
        ring.setSecondsLeft(20);
        QCOMPARE(log.takeRegion(), QRegion());
    }

    void inPartItIsDrawnAsAWhole_data()
    {
        QTest::addColumn<qreal>("scale");
        QTest::addColumn<QSize>("screen");
        for (const qreal scale : {1.0, 1.25, 1.5, 1.75, 2.0})
            QTest::addRow("%g", scale) << scale << QSize(433, 401);
        QTest::newRow("1.5, a small screen") << 1.5 << QSize(301, 211);
    }

    /// A thousand ticks, on the picture that stays in the window between them.
    void inPartItIsDrawnAsAWhole()
    {
        QFETCH(const qreal, scale);
        QFETCH(const QSize, screen);
        const ScreenScale screenScale(scale);
        BreakOverlayPanel panel(100);
        panel.resize(screen);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        constexpr int ticks = 1000;
        for (int tick = 0; tick <= ticks; ++tick) {
            panel.ring()->setSecondsLeft((ticks - tick + 9) / 10);
            panel.ring()->setFraction(double(ticks - tick) / ticks);
            paintRequested(panel);
            const QImage inPart = ringImage(panel);
            panel.ring()->repaint();
            QVERIFY2(inPart == ringImage(panel), qPrintable(QString::number(tick)));
        }
    }
};

ORVANE_TEST(RingViewTest, QApplication)
#include "RingViewTest.moc"
