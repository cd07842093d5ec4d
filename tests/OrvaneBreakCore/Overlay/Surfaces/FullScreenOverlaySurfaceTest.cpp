// SPDX-License-Identifier: GPL-3.0-or-later
#include "FullScreenOverlaySurface.h"

#include "BreakOverlayPanel.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QGuiApplication>
#include <QTest>

/// The last resort: full-screen windows, which hide what is below.
class FullScreenOverlaySurfaceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnUnexpectedWarnings(); }

    void thePanelIsOpaqueBlack()
    {
        BreakOverlayPanel panel(20);
        FullScreenOverlaySurface surface;
        surface.begin();
        surface.present(panel, *QGuiApplication::primaryScreen(), true);
        QVERIFY(panel.isFullScreen());
        QCOMPARE(painted(panel, Qt::white).pixelColor(5, 5), QColor(Qt::black));
        surface.end({});
    }
};

ORVANE_TEST(FullScreenOverlaySurfaceTest, QApplication)
#include "FullScreenOverlaySurfaceTest.moc"
