// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakOverlayController.h"

#include "BreakOverlayPanel.h"
#include "RingView.h"
#include "Support/FakeOverlaySurface.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

/// Runs on two offscreen screens.
class BreakOverlayControllerTest : public QObject
{
    Q_OBJECT

    struct Fixture
    {
        FakeOverlaySurface surface;
        BreakOverlayController controller{surface, &QGuiApplication::screens};

        [[nodiscard]] BreakOverlayPanel &panel(std::size_t index) const
        {
            return *qobject_cast<BreakOverlayPanel *>(surface.panels.at(index));
        }
    };

private Q_SLOTS:
    void init() { failOnUnexpectedWarnings(); }

    void initTestCase() { QCOMPARE(QGuiApplication::screens().size(), 2); }

    void onePanelPerScreenTheFirstWithTheKeyboard()
    {
        Fixture f;
        QVERIFY(!f.controller.isVisible());
        f.controller.show(20);
        QVERIFY(f.controller.isVisible());
        QCOMPARE(f.surface.log, (QStringList{u"begin"_s, u"present Left keyboard"_s, u"present Right"_s}));
        QCOMPARE(f.panel(0).geometry(), QRect(0, 0, 1280, 720));
        QCOMPARE(f.panel(1).geometry(), QRect(1280, -100, 1024, 768));
        QVERIFY(f.panel(0).isVisible() && f.panel(1).isVisible());
    }

    void secondShowReplacesTheFirst()
    {
        Fixture f;
        f.controller.show(20);
        const QPointer<QWidget> first = f.surface.panels.front();
        f.controller.show(60);
        QCOMPARE(f.surface.panels.size(), std::size_t(2));
        QVERIFY(!first->isVisible());
        QCOMPARE(f.panel(0).ring()->secondsLeft(), 60);
        QTRY_VERIFY(first.isNull());
    }

    void hideIsSafeAtAnyTime()
    {
        Fixture f;
        f.controller.hide();
        QCOMPARE(f.surface.log, QStringList());
        f.controller.show(20);
        const QPointer<QWidget> panel = f.surface.panels.front();
        f.controller.hide();
        f.controller.hide();
        QVERIFY(!f.controller.isVisible());
        QCOMPARE(f.surface.log.count(u"end"_s), 1);
        QTRY_VERIFY(panel.isNull());
    }

    void openMenusAndListsCloseFirst()
    {
        Fixture f;
        QMenu menu;
        QMenu *submenu = menu.addMenu(u"Menu"_s);
        submenu->addAction(u"Action"_s);
        menu.popup(QPoint());
        submenu->popup(QPoint());
        f.controller.show(20);
        QVERIFY(!menu.isVisible() && !submenu->isVisible());
        f.controller.hide();

        QComboBox box;
        box.addItems({u"10"_s, u"20"_s});
        box.show();
        box.showPopup();
        QVERIFY(QApplication::activePopupWidget());
        f.controller.show(20);
        QVERIFY(!QApplication::activePopupWidget());
        QVERIFY(box.isVisible());
    }

    void theSurfaceLearnsWhichPressEndedTheBreak()
    {
        Fixture f;
        f.controller.onSkip = [&] { f.controller.hide(); };
        f.controller.show(20);
        constexpr quint32 code = 9;
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, code, 0, 0);
        QCoreApplication::sendEvent(&f.panel(0), &press);
        QCOMPARE(f.surface.endingPress.key, code);
        QVERIFY(f.surface.endingPress.clicked.isEmpty());

        f.controller.show(20);
        const QPushButton *button = f.panel(1).skipButton();
        const QRect place(button->mapToGlobal(QPoint()), button->size());
        QTest::mouseClick(f.panel(1).skipButton(), Qt::LeftButton);
        QCOMPARE(f.surface.endingPress.key, 0U);
        QCOMPARE(f.surface.endingPress.clicked, place);

        f.controller.show(20);
        f.controller.hide();
        QCOMPARE(f.surface.endingPress.key, 0U);
        QVERIFY(f.surface.endingPress.clicked.isEmpty());
    }

    void warmingUpShowsNothing()
    {
        BreakOverlayController::warmUp();
        for (const QWidget *window : QApplication::topLevelWidgets())
            QVERIFY(!window->isVisible());
    }

    void withoutScreensNothingIsShown()
    {
        FakeOverlaySurface surface;
        BreakOverlayController controller(surface, [] { return QList<QScreen *>(); });
        controller.show(20);
        QVERIFY(!controller.isVisible());
        QCOMPARE(surface.log, QStringList());
        controller.update(3, 0.5);
        controller.hide();
    }

    void update_data()
    {
        QTest::addColumn<double>("secondsLeft");
        QTest::addColumn<double>("fraction");
        QTest::addColumn<qint64>("shown");
        QTest::newRow("rounded up") << 4.2 << 0.21 << qint64(5);
        QTest::newRow("whole") << 4.0 << 0.2 << qint64(4);
        QTest::newRow("past the end") << -0.3 << 0.0 << qint64(0);
        QTest::newRow("long past the end") << -3600.0 << -180.0 << qint64(0);
        QTest::newRow("more than the whole") << 49.9 << 2.495 << qint64(50);
        QTest::newRow("large") << 9e15 << 1.0 << qint64(9'000'000'000'000'000);
    }

    void update()
    {
        QFETCH(const double, secondsLeft);
        QFETCH(const double, fraction);
        QFETCH(const qint64, shown);
        Fixture f;
        f.controller.show(20);
        f.controller.update(secondsLeft, fraction);
        for (std::size_t index = 0; index < 2; ++index) {
            QCOMPARE(f.panel(index).ring()->secondsLeft(), shown);
            QCOMPARE(f.panel(index).ring()->fraction(), fraction);
        }
    }

    void everyPanelSkipsByButtonAndEscape()
    {
        for (std::size_t index = 0; index < 2; ++index) {
            Fixture f;
            int skips = 0;
            f.controller.onSkip = [&] {
                ++skips;
                f.controller.hide();
            };
            f.controller.show(20);
            QTest::keyClick(&f.panel(index), Qt::Key_Escape);
            QCOMPARE(skips, 1);
            f.controller.show(20);
            QTest::mouseClick(f.panel(index).skipButton(), Qt::LeftButton);
            QCOMPARE(skips, 2);
            QVERIFY(!f.controller.isVisible());
        }
    }

    void withoutAListenerTheOverlayStays()
    {
        Fixture f;
        f.controller.show(20);
        QTest::keyClick(&f.panel(0), Qt::Key_Escape);
        QTest::mouseClick(f.panel(0).skipButton(), Qt::LeftButton);
        f.controller.skipPressed();
        QVERIFY(f.controller.isVisible());
        QVERIFY(f.panel(0).isVisible());
    }

    void aPanelThatOutlivesItsControllerIsHarmless()
    {
        FakeOverlaySurface surface;
        auto controller = std::make_unique<BreakOverlayController>(surface, &QGuiApplication::screens);
        int skips = 0;
        controller->onSkip = [&] { ++skips; };
        controller->show(20);
        const QPointer<BreakOverlayPanel> panel = qobject_cast<BreakOverlayPanel *>(surface.panels.front());
        controller.reset();
        QVERIFY(panel && !panel->isVisible());
        panel->cancelOperation();
        panel->skipButton()->click();
        QCOMPARE(skips, 0);
    }
};

ORVANE_TEST(BreakOverlayControllerTest, QApplication)
#include "BreakOverlayControllerTest.moc"
