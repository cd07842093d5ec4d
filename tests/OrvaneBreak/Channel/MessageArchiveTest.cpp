// SPDX-License-Identifier: GPL-3.0-or-later
#include "MessageArchive.h"

#include "Support/MemoryPreferences.h"
#include "Support/TestProgram.h"

#include <QJsonArray>
#include <QTest>
#include <QTimeZone>

using namespace Qt::StringLiterals;

namespace {

const QDateTime now(QDate(2026, 3, 3), QTime(13, 5, 7, 250), QTimeZone::utc());

struct Fixture
{
    MemoryPreferences preferences;
    MessageArchive archive{preferences};
};

/// Records all stored values after each change.
class RecordingPreferences final : public Preferences
{
public:
    [[nodiscard]] QJsonValue value(const QString &key) const override { return m_stored.value(key); }

    void setValue(const QString &key, const QJsonValue &value) override
    {
        m_stored.setValue(key, value);
        moments.append(m_stored.stored);
    }

    QList<QJsonObject> moments;

private:
    MemoryPreferences m_stored;
};

QJsonObject entry(qint64 id, const QString &body)
{
    return {{u"id"_s, id}, {u"body"_s, body}, {u"date"_s, u"2026-01-01T00:00:00.000Z"_s}, {u"mine"_s, false}};
}

} // namespace

/// The conversation as it is kept in the preferences.
class MessageArchiveTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void aShownMessageIsRememberedAcknowledgedAndArchived()
    {
        Fixture f;
        QVERIFY(!f.archive.wasShown(7));
        QVERIFY(!f.archive.acknowledged());
        f.archive.markShown({7, u"Bonjour"_s}, now);
        QVERIFY(f.archive.wasShown(7));
        QCOMPARE(f.archive.acknowledged(), std::optional<qint64>(7));
        const QJsonObject expected{
            {u"OBShownMessages"_s, QJsonArray{7}},
            {u"OBAckMessage"_s, 7},
            {u"OBMessageHistory"_s, QJsonArray{QJsonObject{{u"id"_s, 7},
                                                           {u"body"_s, u"Bonjour"_s},
                                                           {u"date"_s, u"2026-03-03T13:05:07.250Z"_s},
                                                           {u"mine"_s, false}}}}};
        QCOMPARE(f.preferences.stored, expected);
        QCOMPARE(f.archive.history(now), (QList<ArchivedMessage>{{7, u"Bonjour"_s, now, false}}));
    }

    static void largeIdsStayExact()
    {
        Fixture f;
        const qint64 large = 9007199254740993;
        f.archive.markShown({large, u"Bonjour"_s}, now);
        QVERIFY(f.archive.wasShown(large));
        QVERIFY(!f.archive.wasShown(large - 1));
        QCOMPARE(f.archive.acknowledged(), std::optional(large));
        QCOMPARE(f.archive.history(now).constFirst().id, large);
    }

    static void theLastFiftyAreKept()
    {
        Fixture f;
        for (qint64 id = 1; id <= 51; ++id)
            f.archive.markShown({id, QString::number(id)}, now);
        const QJsonArray shown = f.preferences.stored[u"OBShownMessages"_s].toArray();
        QCOMPARE(shown.size(), 50);
        QCOMPARE(shown.first().toInteger(), 2);
        QVERIFY(!f.archive.wasShown(1));
        const QList<ArchivedMessage> history = f.archive.history(now);
        QCOMPARE(history.size(), 50);
        QCOMPARE(history.constFirst().id, 51);
        QCOMPARE(history.constLast().id, 2);
    }

    static void aMessageIsArchivedOnce()
    {
        Fixture f;
        f.archive.markShown({7, u"Bonjour"_s}, now);
        f.archive.markShown({7, u"Bonsoir"_s}, now.addSecs(60));
        QCOMPARE(f.archive.history(now), (QList<ArchivedMessage>{{7, u"Bonjour"_s, now, false}}));
    }

    static void noMessageIsMissingIfTheProcessDiesInBetween()
    {
        RecordingPreferences recording;
        MessageArchive(recording).markShown({7, u"Bonjour"_s}, now);
        QVERIFY(recording.moments.size() > 1);
        for (const QJsonObject &moment : recording.moments) {
            MemoryPreferences preferences(moment);
            MessageArchive archive(preferences);
            const QList<ArchivedMessage> expected{{7, u"Bonjour"_s, now, false}};
            QCOMPARE(archive.history(now), expected);
            archive.markShown({7, u"Bonjour"_s}, now.addSecs(3600));
            QCOMPARE(archive.history(now), expected);
        }
    }

    static void repliesUseTheSecondsAsIdAndAreAllKept()
    {
        Fixture f;
        f.archive.addReply(u"un"_s, now);
        f.archive.addReply(u"deux"_s, now);
        const qint64 id = -now.toSecsSinceEpoch();
        QCOMPARE(f.archive.history(now),
                 (QList<ArchivedMessage>{{id, u"deux"_s, now, true}, {id, u"un"_s, now, true}}));
        for (int count = 0; count < 60; ++count)
            f.archive.addReply(QString::number(count), now);
        QCOMPARE(f.archive.history(now).size(), 50);
        QCOMPARE(f.archive.history(now).constFirst().body, u"59"_s);
    }

    static void acknowledgementsBelowOneAreNone()
    {
        Fixture f;
        for (const QJsonValue &value : {QJsonValue(0), QJsonValue(-3), QJsonValue(1.5), QJsonValue(true),
                                        QJsonValue(u"7"_s), QJsonValue(QJsonArray{7})}) {
            f.preferences.setValue(u"OBAckMessage"_s, value);
            QVERIFY(!f.archive.acknowledged());
        }
    }

    static void aDamagedShownListIsEmpty()
    {
        Fixture f;
        for (const QJsonValue &value :
             {QJsonValue(7), QJsonValue(QJsonArray{7, u"8"_s}), QJsonValue(QJsonArray{7, 8.5}),
              QJsonValue(QJsonArray{7, true}), QJsonValue(QJsonObject())}) {
            f.preferences.setValue(u"OBShownMessages"_s, value);
            QVERIFY(!f.archive.wasShown(7));
        }
        f.archive.markShown({9, u"neuf"_s}, now);
        QCOMPARE(f.preferences.stored[u"OBShownMessages"_s].toArray(), QJsonArray{9});
    }

    static void damagedEntriesOfTheConversation()
    {
        Fixture f;
        QJsonObject withoutDate = entry(2, u"sans date"_s);
        withoutDate.remove(u"date"_s);
        QJsonObject oddDate = entry(3, u"date étrange"_s);
        oddDate.insert(u"date"_s, 12);
        QJsonObject oddMine = entry(4, u"à qui"_s);
        oddMine.insert(u"mine"_s, u"true"_s);
        QJsonObject withoutBody = entry(5, u""_s);
        withoutBody.remove(u"body"_s);
        QJsonObject oddId = entry(6, u"quel numéro"_s);
        oddId.insert(u"id"_s, 6.5);
        f.preferences.setValue(u"OBMessageHistory"_s, QJsonArray{entry(1, u"un"_s), withoutDate, oddDate,
                                                                 oddMine, withoutBody, oddId});
        const QDateTime stored(QDate(2026, 1, 1), QTime(0, 0), QTimeZone::utc());
        QCOMPARE(f.archive.history(now), (QList<ArchivedMessage>{{4, u"à qui"_s, stored, false},
                                                                 {3, u"date étrange"_s, now, false},
                                                                 {2, u"sans date"_s, now, false},
                                                                 {1, u"un"_s, stored, false}}));
    }

    static void aConversationOfAnotherShapeIsEmptyAndOverwritten()
    {
        Fixture f;
        for (const QJsonValue &value : {QJsonValue(u"texte"_s), QJsonValue(QJsonArray{entry(1, u"un"_s), 5}),
                                        QJsonValue(QJsonObject())}) {
            f.preferences.setValue(u"OBMessageHistory"_s, value);
            QVERIFY(f.archive.history(now).isEmpty());
        }
        f.archive.addReply(u"bonjour"_s, now);
        QCOMPARE(f.archive.history(now).size(), 1);
    }
};

ORVANE_TEST(MessageArchiveTest, TestProgram::NoApplication)
#include "MessageArchiveTest.moc"
