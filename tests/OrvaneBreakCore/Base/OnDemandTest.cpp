// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnDemand.h"

#include "Support/TestProgram.h"

#include <QTest>

class OnDemandTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void theFirstUseMakesTheObject()
    {
        int made = 0;
        OnDemand<int> number([&made] { return std::make_unique<int>(++made); });
        QCOMPARE(made, 0);
        const int *first = number.get();
        QCOMPARE(*first, 1);
        QVERIFY(number.get() == first);
        QCOMPARE(made, 1);
    }

    static void afterAFailureTheNextUseTriesAgain()
    {
        bool fails = true;
        OnDemand<int> number([&fails] { return fails ? nullptr : std::make_unique<int>(7); });
        QVERIFY(!number.get());
        fails = false;
        QCOMPARE(*number.get(), 7);
    }
};

ORVANE_TEST(OnDemandTest, TestProgram::NoApplication)
#include "OnDemandTest.moc"
