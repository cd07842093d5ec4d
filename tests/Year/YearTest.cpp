// SPDX-License-Identifier: GPL-3.0-or-later
#include "Year.h"

#include "Support/TestProgram.h"
#include "Support/TestSeed.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QTest>
#include <QThreadPool>

#include <optional>

using namespace Qt::StringLiterals;

/// The whole application for a year of virtual time: the same few years each time, or, with ORVANE_TEST_SEED,
/// the year of that seed and as many more as ORVANE_TEST_YEARS says.
class YearTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setWindowIcon(QPixmap(64, 64));
        // As in the program, one thread paints curves; where it is one of the global pool, it is there from
        // the beginning and stays, so that threads can be counted.
        qputenv("QT_NO_GUI_THREADPOOL", "1");
        QThreadPool::globalInstance()->setMaxThreadCount(1);
        QThreadPool::globalInstance()->setExpiryTimeout(-1);
        QThreadPool::globalInstance()->start([] {});
    }

    void init() { failOnUnexpectedWarnings(); }

    void aYear_data()
    {
        QTest::addColumn<quint32>("seed");
        constexpr int usualYears = 5;
        const std::optional<quint32> requested = requestedSeed();
        const quint32 first = requested.value_or(1);
        bool isGiven = false;
        const int given = qEnvironmentVariableIntValue("ORVANE_TEST_YEARS", &isGiven);
        const auto years = static_cast<quint32>(qMax(1, isGiven ? given : requested ? 1 : usualYears));
        for (quint32 year = 0; year < years; ++year)
            QTest::addRow("%u", first + year) << first + year;
    }

    void aYear()
    {
        QFETCH(quint32, seed);
        qInfo("seed %u; ORVANE_TEST_SEED repeats it", seed);
        Year year(seed);
        year.live();
        // Line by line: the test framework cuts long messages off.
        const QStringList report = year.report();
        for (const QString &line : report)
            qInfo().noquote() << line;
        QVERIFY2(report.isEmpty(), qPrintable(report.value(0)));
        // What never happened was not tried.
        for (const QString &thing : {u"Waiting, DuePresent"_s, u"Waiting, DueAway"_s, u"BreakActive, Over"_s,
                                     u"the break is skipped"_s, u"the machine sleeps"_s,
                                     u"the session is locked"_s, u"the clock is set"_s, u"the other mode"_s,
                                     u"answer to messageAlert"_s, u"answer to a report"_s})
            QVERIFY2(year.tally().value(thing) > 0, qPrintable(thing));
    }
};

ORVANE_TEST(YearTest, QApplication)
#include "YearTest.moc"
