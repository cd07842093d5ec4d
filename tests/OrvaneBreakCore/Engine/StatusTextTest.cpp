// SPDX-License-Identifier: GPL-3.0-or-later
#include "StatusText.h"

#include "Support/TestProgram.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class StatusTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timeLeft_data()
    {
        QTest::addColumn<qint64>("microseconds");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, Interval left, const QString &expected) {
            QTest::newRow(name) << qint64(left.count()) << expected;
        };
        row("19 min 1 s", 19min + 1s, u"Prochaine pause dans 20 min"_s);
        row("20 min", 20min, u"Prochaine pause dans 20 min"_s);
        row("20 min and a microsecond", 20min + 1us, u"Prochaine pause dans 21 min"_s);
        row("30 s", 30s, u"Prochaine pause dans 1 min"_s);
        row("3 s past", -3s, u"Prochaine pause dans 1 min"_s);
        row("an hour past", -1h, u"Prochaine pause dans 1 min"_s);
        row("59 min", 59min, u"Prochaine pause dans 59 min"_s);
        row("59 min 30 s", 59min + 30s, u"Prochaine pause dans 1 h 00"_s);
        row("125 min", 125min, u"Prochaine pause dans 2 h 05"_s);
        row("a clock set back by a year", 8760h + 10min, u"Prochaine pause dans 8760 h 10"_s);
    }

    void timeLeft()
    {
        QFETCH(const qint64, microseconds);
        QFETCH(const QString, expected);
        const Date now{1'700'000'000s};
        QCOMPARE(breakStatusText(false, true, now + Interval(microseconds), now), expected);
    }

    void duringABreakTheOtherStateIsIgnored()
    {
        const Date now{1'700'000'000s};
        for (const bool isActive : {false, true}) {
            QCOMPARE(breakStatusText(true, isActive, std::nullopt, now),
                     u"Pause en cours : regarde au loin"_s);
            QCOMPARE(breakStatusText(true, isActive, now + 20min, now),
                     u"Pause en cours : regarde au loin"_s);
        }
    }

    void offWithoutReminderOrDate()
    {
        const Date now{1'700'000'000s};
        QCOMPARE(breakStatusText(false, false, std::nullopt, now), u"Rappels désactivés"_s);
        QCOMPARE(breakStatusText(false, false, now + 20min, now), u"Rappels désactivés"_s);
        QCOMPARE(breakStatusText(false, true, std::nullopt, now), u"Rappels désactivés"_s);
    }
};

ORVANE_TEST(StatusTextTest, TestProgram::NoApplication)
#include "StatusTextTest.moc"
