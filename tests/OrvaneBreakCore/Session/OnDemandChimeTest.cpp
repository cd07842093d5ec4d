// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnDemandChime.h"

#include "Support/EngineFakes.h"
#include "Support/TestProgram.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList played;

class FakeModule final : public SoundModule
{
public:
    [[nodiscard]] std::unique_ptr<Chime> makeChime(const QString &soundsFolder) const override
    {
        played.append(soundsFolder);
        return std::make_unique<FakeChime>(played);
    }
};

const FakeModule module;

} // namespace

class OnDemandChimeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void init() { played.clear(); }

    static void theFirstSoundLoads()
    {
        int loads = 0;
        OnDemandChime chime(u"/sounds"_s, [&loads] {
            ++loads;
            return &module;
        });
        QCOMPARE(loads, 0);
        chime.play(u"Glass"_s);
        chime.play(u"Glass"_s);
        QCOMPARE(loads, 1);
        QCOMPARE(played, QStringList({u"/sounds"_s, u"play Glass"_s, u"play Glass"_s}));
    }

    static void withoutTheModuleItIsQuiet()
    {
        const SoundModule *found = nullptr;
        OnDemandChime chime(u"/sounds"_s, [&found] { return found; });
        chime.play(u"Glass"_s);
        QCOMPARE(played, QStringList());
        found = &module;
        chime.play(u"Glass"_s);
        QCOMPARE(played.size(), 2);
    }
};

ORVANE_TEST(OnDemandChimeTest, TestProgram::NoApplication)
#include "OnDemandChimeTest.moc"
