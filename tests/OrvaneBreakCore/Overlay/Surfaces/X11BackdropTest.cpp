// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Backdrop.h"

#include "BreakOverlayPanel.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QTest>

/// The darkened picture of a screen and how a panel shows it.
class X11BackdropTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnUnexpectedWarnings(); }

    void everyChannelIsAQuarter()
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

    void aPanelShowsItPixelByPixel()
    {
        for (const int ratio : {1, 2}) {
            BreakOverlayPanel panel(20);
            panel.resize(640, 480);
            QImage picture(panel.size() * ratio, QImage::Format_RGB32);
            picture.fill(QColor(10, 20, 30));
            picture.setPixelColor(7, 3, Qt::red);
            QPalette palette = panel.palette();
            palette.setBrush(QPalette::Window, picture);
            panel.setPalette(palette);
            const QImage shown = painted(panel, Qt::white, ratio);
            QCOMPARE(shown.pixelColor(6, 3), QColor(10, 20, 30));
            QCOMPARE(shown.pixelColor(7, 3), QColor(Qt::red));
            QCOMPARE(shown.pixelColor(8, 3), QColor(10, 20, 30));
            QCOMPARE(shown.pixelColor(640 * ratio - 1, 480 * ratio - 1), QColor(10, 20, 30));
        }
    }
};

ORVANE_TEST(X11BackdropTest, QApplication)
#include "X11BackdropTest.moc"
