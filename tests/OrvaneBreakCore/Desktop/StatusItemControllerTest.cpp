// SPDX-License-Identifier: GPL-3.0-or-later
#include "StatusItemController.h"

#include "Palette.h"
#include "Support/FakeTray.h"
#include "Support/TestProgram.h"

#include <QApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<QMenu> namedMenu(const QString &name)
{
    auto menu = std::make_unique<QMenu>();
    menu->setObjectName(name);
    return menu;
}

} // namespace

class StatusItemControllerTest : public QObject
{
    Q_OBJECT

    struct Fixture
    {
        Tray tray;
        StatusItemController controller{[this] { return std::make_unique<FakeTrayItem>(tray); }};
    };

private Q_SLOTS:
    void showsNothingAtFirst()
    {
        Fixture f;
        QVERIFY(!f.controller.isEnabled());
        QCOMPARE(f.tray.itemsEverMade, 0);
    }

    void activeBeforeEnabledShowsTheFilledEyeStraightAway()
    {
        Fixture f;
        f.controller.setActive(true);
        QCOMPARE(f.tray.itemsEverMade, 0);
        f.controller.enable(namedMenu(u"first"_s));
        QVERIFY(f.controller.isEnabled());
        QCOMPARE(f.tray.symbol, u"eye.fill"_s);
        QCOMPARE(f.tray.tint, std::optional<QColor>(breakTealFixed));
    }

    void enabledTwiceIsOneItemWithTheSecondMenu()
    {
        Fixture f;
        f.controller.enable(namedMenu(u"first"_s));
        f.controller.enable(namedMenu(u"second"_s));
        QCOMPARE(f.tray.itemsEverMade, 1);
        QCOMPARE(f.tray.menu->objectName(), u"second"_s);
    }

    void disableWithoutAnItemDoesNothing()
    {
        Fixture f;
        f.controller.disable();
        QVERIFY(!f.controller.isEnabled());
    }

    void disabledAndEnabledIsANewItemOfTheSameVariant()
    {
        Fixture f;
        f.controller.enable(namedMenu(u"first"_s));
        f.controller.setActive(true);
        f.controller.disable();
        QVERIFY(!f.controller.isEnabled());
        QCOMPARE(f.tray.items, 0);
        f.tray.symbol.clear();
        f.controller.enable(namedMenu(u"second"_s));
        QCOMPARE(f.tray.itemsEverMade, 2);
        QCOMPARE(f.tray.symbol, u"eye.fill"_s);
    }

    void inactiveHasNoTint()
    {
        Fixture f;
        f.controller.enable(namedMenu(u"first"_s));
        QCOMPARE(f.tray.symbol, u"eye"_s);
        QVERIFY(!f.tray.tint);
        f.controller.setActive(true);
        QVERIFY(f.tray.tint);
        f.controller.setActive(false);
        QCOMPARE(f.tray.symbol, u"eye"_s);
        QVERIFY(!f.tray.tint);
    }
};

ORVANE_TEST(StatusItemControllerTest, QApplication)
#include "StatusItemControllerTest.moc"
