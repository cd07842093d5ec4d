// SPDX-License-Identifier: GPL-3.0-or-later
#include "FullScreenOverlaySurface.h"

#include "BreakOverlayPanel.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QGuiApplication>
#include <QTest>

/// Full-screen windows, which hide what is below.
class FullScreenOverlaySurfaceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnUnexpectedWarnings(); }

    void panelIsOpaqueBlack()
    {
        BreakOverlayPanel panel(20);
        FullScreenOverlaySurface surface;
        surface.begin();
        surface.present(panel, *QGuiApplication::primaryScreen(), true);
        QVERIFY(panel.isFullScreen());
        for (QWidget *part : panel.findChildren<QWidget *>())
            part->hide();
        QImage black(panel.size(), QImage::Format_ARGB32_Premultiplied);
        black.fill(Qt::black);
        QCOMPARE(painted(panel, Qt::white), black);
        surface.end({});
    }
};

ORVANE_TEST(FullScreenOverlaySurfaceTest, QApplication)
#include "FullScreenOverlaySurfaceTest.moc"
