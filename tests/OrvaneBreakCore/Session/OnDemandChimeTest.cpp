// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnDemandChime.h"

#include "Support/EngineFakes.h"
#include "Support/TestProgram.h"

#include <QTest>

using namespace Qt::StringLiterals;

class OnDemandChimeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void theModulePlaysTheSounds()
    {
        QStringList played;
        OnDemandChime chime([&played] { return std::make_unique<FakeChime>(played); });
        chime.play(u"Glass"_s);
        chime.play(u"Ping"_s);
        QCOMPARE(played, QStringList({u"play Glass"_s, u"play Ping"_s}));
    }

    static void withoutTheModuleItIsSilent()
    {
        int attempts = 0;
        OnDemandChime chime([&attempts] {
            ++attempts;
            return nullptr;
        });
        chime.play(u"Glass"_s);
        QCOMPARE(attempts, 1);
    }
};

ORVANE_TEST(OnDemandChimeTest, TestProgram::NoApplication)
#include "OnDemandChimeTest.moc"
