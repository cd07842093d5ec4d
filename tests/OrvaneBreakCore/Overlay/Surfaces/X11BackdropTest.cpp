// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Backdrop.h"

#include "BreakOverlayPanel.h"
#include "ScreenFrame.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QRandomGenerator>
#include <QTest>

/// The darkened picture of a screen, and a panel that shows it.
class X11BackdropTest : public QObject
{
    Q_OBJECT

    static QImage noise(QSize size, double ratio)
    {
        QImage picture(size, QImage::Format_RGB32);
        QRandomGenerator random(1);
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x)
                picture.setPixel(x, y, 0xff000000 | random.bounded(0x1000000U));
        }
        picture.setDevicePixelRatio(ratio);
        return picture;
    }

private Q_SLOTS:
    void init() { failOnUnexpectedWarnings(); }

    void everyChannelIsDividedByFour()
    {
        for (const QImage::Format format :
             {QImage::Format_RGB32, QImage::Format_ARGB32_Premultiplied, QImage::Format_RGB888}) {
            QImage picture(3, 2, format);
            picture.fill(QColor(200, 101, 4));
            picture.setPixelColor(2, 1, Qt::white);
            const QImage dark = X11Backdrop::darkened(picture);
            QCOMPARE(dark.size(), picture.size());
            QCOMPARE(dark.pixelColor(0, 0), QColor(50, 25, 1));
            QCOMPARE(dark.pixelColor(2, 1), QColor(63, 63, 63));
        }
        QVERIFY(X11Backdrop::darkened(QImage()).isNull());
    }

    void panelShowsItPixelByPixel()
    {
        for (const double ratio : {1.0, 1.3, 1.75, 2.0}) {
            BreakOverlayPanel panel(20);
            const QImage picture = noise(QSize(1280, 1024), ratio);
            panel.resize(coveringSize(picture.size(), ratio));
            QPalette palette = panel.palette();
            palette.setBrush(QPalette::Window, picture);
            panel.setPalette(palette);
            for (QWidget *part : panel.findChildren<QWidget *>())
                part->hide();
            const QImage shown = painted(panel, Qt::white, ratio).convertToFormat(picture.format());
            QCOMPARE(shown.copy(QRect(QPoint(), picture.size())), picture);
        }
    }
};

ORVANE_TEST(X11BackdropTest, QApplication)
#include "X11BackdropTest.moc"
