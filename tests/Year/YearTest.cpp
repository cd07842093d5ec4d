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

/// Runs the whole application for simulated years: always the same five, or with ORVANE_TEST_SEED the year of
/// that seed. ORVANE_TEST_YEARS changes their number.
class YearTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setWindowIcon(QPixmap(64, 64));
        // As in the program, one thread paints curves. Versions of Qt that take it from the global pool find
        // it there from the beginning, so that the number of threads stays the same.
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
        year.run();
        // Line by line: the test framework cuts long messages off.
        const QStringList report = year.report();
        for (const QString &line : report)
            qInfo().noquote() << line;
        QVERIFY2(report.isEmpty(), qPrintable(report.value(0)));
        // An operation that never occurred was not tested.
        for (const QString &thing : {u"Waiting, DuePresent"_s, u"Waiting, DueAway"_s, u"BreakActive, Over"_s,
                                     u"the break is skipped"_s, u"the machine sleeps"_s,
                                     u"the session is locked"_s, u"the clock is set"_s, u"the other mode"_s,
                                     u"answer to messageAlert"_s, u"answer to a report"_s})
            QVERIFY2(year.tally().value(thing) > 0, qPrintable(thing));
    }
};

ORVANE_TEST(YearTest, QApplication)
#include "YearTest.moc"
