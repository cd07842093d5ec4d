// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakSettings.h"

#include "Support/MemoryPreferences.h"
#include "Support/TestProgram.h"

#include <QTest>

using namespace Qt::StringLiterals;

class BreakSettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void optionTables()
    {
        QStringList rows;
        for (const auto &option : BreakSettings::intervals)
            rows << u"%1=%2"_s.arg(option.titre).arg(option.minutes);
        for (const auto &option : BreakSettings::pauseDurations)
            rows << u"%1=%2"_s.arg(option.titre).arg(option.secondes);
        const QStringList expected{u"10 minutes=10"_s, u"20 minutes=20"_s,  u"30 minutes=30"_s,
                                   u"45 minutes=45"_s, u"20 secondes=20"_s, u"30 secondes=30"_s,
                                   u"60 secondes=60"_s};
        QCOMPARE(rows, expected);
    }

    void freshInstall()
    {
        const MemoryPreferences preferences;
        QCOMPARE(BreakSettings::intervalMinutes(preferences), 20);
        QCOMPARE(BreakSettings::pauseSeconds(preferences), 20);
        QCOMPARE(BreakSettings::soundEnabled(preferences), false);
    }

    void intervalOutsideTheTableReadsAs20AndStaysStored()
    {
        MemoryPreferences preferences;
        BreakSettings::setIntervalMinutes(preferences, 15);
        QCOMPARE(BreakSettings::intervalMinutes(preferences), 20);
        QCOMPARE(preferences.stored.value("OBIntervalMinutes"_L1), QJsonValue(15));
    }

    void otherNumbersReadAs20()
    {
        MemoryPreferences preferences;
        BreakSettings::setPauseSeconds(preferences, 45);
        BreakSettings::setIntervalMinutes(preferences, 60);
        QCOMPARE(BreakSettings::pauseSeconds(preferences), 20);
        QCOMPARE(BreakSettings::intervalMinutes(preferences), 20);
    }

    void validNumbersRead()
    {
        MemoryPreferences preferences;
        for (const auto &option : BreakSettings::intervals) {
            BreakSettings::setIntervalMinutes(preferences, option.minutes);
            QCOMPARE(BreakSettings::intervalMinutes(preferences), option.minutes);
        }
        for (const auto &option : BreakSettings::pauseDurations) {
            BreakSettings::setPauseSeconds(preferences, option.secondes);
            QCOMPARE(BreakSettings::pauseSeconds(preferences), option.secondes);
        }
    }

    void invalidValuesReadAsDefaults_data()
    {
        QTest::addColumn<QJsonValue>("stored");
        QTest::newRow("zero") << QJsonValue(0);
        QTest::newRow("negative") << QJsonValue(-20);
        QTest::newRow("huge") << QJsonValue(std::numeric_limits<qint64>::max());
        QTest::newRow("10 beyond 32 bits") << QJsonValue((qint64(1) << 32) + 10);
        QTest::newRow("fraction") << QJsonValue(10.5);
        QTest::newRow("text") << QJsonValue(u"10"_s);
        QTest::newRow("boolean") << QJsonValue(true);
        QTest::newRow("array") << QJsonValue(QJsonArray{10});
        QTest::newRow("null") << QJsonValue();
    }

    void invalidValuesReadAsDefaults()
    {
        QFETCH(const QJsonValue, stored);
        MemoryPreferences preferences;
        preferences.setValue(u"OBIntervalMinutes"_s, stored);
        preferences.setValue(u"OBPauseSeconds"_s, stored);
        preferences.setValue(u"OBSoundEnabled"_s, u"true"_s);
        QCOMPARE(BreakSettings::intervalMinutes(preferences), 20);
        QCOMPARE(BreakSettings::pauseSeconds(preferences), 20);
        QCOMPARE(BreakSettings::soundEnabled(preferences), false);
    }

    void soundIsStoredAsABoolean()
    {
        MemoryPreferences preferences;
        BreakSettings::setSoundEnabled(preferences, true);
        QCOMPARE(preferences.stored.value("OBSoundEnabled"_L1), QJsonValue(true));
        QVERIFY(BreakSettings::soundEnabled(preferences));
    }
};

ORVANE_TEST(BreakSettingsTest, TestProgram::NoApplication)
#include "BreakSettingsTest.moc"
