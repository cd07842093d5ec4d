// SPDX-License-Identifier: GPL-3.0-or-later
#include "Year/Year.h"

#include "Support/Widgets.h"

#include <QApplication>
#include <QTest>
#include <QThreadPool>

#include <random>

using namespace Qt::StringLiterals;

/// The whole application for a year of virtual time. ORVANE_TEST_SEED repeats the year of one seed,
/// ORVANE_TEST_YEARS lives more years, from that seed or a random one on.
class YearTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setWindowIcon(QPixmap(64, 64));
        // As in the program, one thread paints curves; here it is there from the beginning and stays, so that
        // threads can be counted.
        QThreadPool::globalInstance()->setMaxThreadCount(1);
        QThreadPool::globalInstance()->setExpiryTimeout(-1);
        QThreadPool::globalInstance()->start([] {});
    }

    void init() { failOnUnexpectedWarnings(); }

    void aYear_data()
    {
        QTest::addColumn<quint32>("seed");
        bool isGiven = false;
        const auto given = static_cast<quint32>(qEnvironmentVariableIntValue("ORVANE_TEST_SEED", &isGiven));
        if (!isGiven) {
            for (const quint32 seed : {1U, 2U, 3U, 4U})
                QTest::addRow("%u", seed) << seed;
        }
        const quint32 first = isGiven ? given : std::random_device()();
        const auto years = static_cast<quint32>(qMax(1, qEnvironmentVariableIntValue("ORVANE_TEST_YEARS")));
        for (quint32 year = 0; year < years; ++year)
            QTest::addRow("%u", first + year) << first + year;
    }

    void aYear()
    {
        QFETCH(quint32, seed);
        qInfo("seed %u; run again with ORVANE_TEST_SEED=%d", seed, static_cast<int>(seed));
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

QTEST_MAIN(YearTest)
#include "YearTest.moc"
