// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScreenFrame.h"

#include "Support/TestProgram.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTest>

using namespace Qt::StringLiterals;

/// Runs on offscreen screens, some of which mirror others; the platform sorts them by name.
class ScreenFrameTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QCOMPARE(QGuiApplication::screens().size(), 6); }

    void mirrorsAndPartsOfAnotherScreenAreLeftOut()
    {
        QStringList names;
        for (const QScreen *screen : distinctScreens(QGuiApplication::screens()))
            names.append(screen->name());
        QCOMPARE(names, (QStringList{u"1 left"_s, u"5 right"_s, u"6 overlapping right"_s}));
    }

    void withoutScreensThereIsNone() { QCOMPARE(distinctScreens({}).size(), 0); }

    void sizeIsRoundedUpToThePixelsOfTheToolkit()
    {
        QCOMPARE(coveringSize(QSize(1280, 1024), 1), QSize(1280, 1024));
        QCOMPARE(coveringSize(QSize(1280, 1024), 1.75), QSize(732, 586));
        QCOMPARE(coveringSize(QSize(1366, 768), 1.5), QSize(911, 512));
    }

    void frameIsInThePixelsOfTheServer()
    {
        QCOMPARE(nativeFrame(*QGuiApplication::screens().at(2)), QRect(100, 0, 800, 600));
    }
};

ORVANE_TEST(ScreenFrameTest, QGuiApplication)
#include "ScreenFrameTest.moc"
