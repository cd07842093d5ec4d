// SPDX-License-Identifier: GPL-3.0-or-later
#include "Channel/CheckInAnswer.h"
#include "Channel/MessageArchive.h"
#include "Fuzz/Mutator.h"
#include "Support/MemoryPreferences.h"
#include "Support/Signer.h"

#include <QJsonArray>
#include <QTest>
#include <QTimeZone>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int inputs = 20'000;
const QString nonce = u"0F1E2D3C4B5A69788796A5B4C3D2E1F0"_s;
const QDateTime now(QDate(2026, 3, 3), QTime(13, 5), QTimeZone::utc());

} // namespace

/// Many inputs that nobody would write on purpose, made out of a few that somebody did.
class HostileInputTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void noAnswerIsBelievedThatTheMakersDidNotSign()
    {
        const Signer makers;
        const Date date(1'700'000'000s);
        Mutator mutator(QStringLiteral(ORVANE_CORPUS) + u"/check-in"_s, chosenSeed());
        QVERIFY(mutator.corpus().size() >= 5);
        for (int count = 0; count < inputs; ++count) {
            const QByteArray input = mutator.next();
            const CheckInVerdict verdict = judgeCheckInAnswer(input, nonce, makers.publicKeyBase64(), date);
            QVERIFY2(std::holds_alternative<CheckInRefusal>(verdict), input.constData());
        }
    }

    static void aSignedAnswerThatIsChangedSaysWhatWasSignedOrNothing()
    {
        const Signer makers;
        const Date date(1'700'000'000s);
        const QByteArray whole = jsonBytes(makers.answer(nonce, 1'700'000'000, 7, u"Bonjour | é 👁"_s));
        std::mt19937 random(chosenSeed());
        for (int count = 0; count < inputs; ++count) {
            QByteArray input = whole;
            input[static_cast<qsizetype>(random() % static_cast<unsigned>(input.size()))] =
                static_cast<char>(random());
            const CheckInVerdict verdict = judgeCheckInAnswer(input, nonce, makers.publicKeyBase64(), date);
            const auto *message = std::get_if<ServerMessage>(&verdict);
            QVERIFY(!message || *message == (ServerMessage{7, u"Bonjour | é 👁"_s}));
            QVERIFY(!std::holds_alternative<std::monostate>(verdict));
        }
    }

    static void noHistoryIsTooDamagedToRead()
    {
        Mutator mutator(QStringLiteral(ORVANE_CORPUS) + u"/history"_s, chosenSeed());
        QVERIFY(mutator.corpus().size() >= 3);
        for (int count = 0; count < inputs; ++count) {
            MemoryPreferences preferences;
            preferences.stored = QJsonDocument::fromJson(mutator.next()).object();
            MessageArchive archive(preferences);
            const qsizetype before = archive.history(now).size();
            archive.addReply(u"réponse"_s, now);
            QCOMPARE(archive.history(now).constFirst().body, u"réponse"_s);
            QVERIFY(archive.history(now).size() <= before + 1);
            archive.markShown({7, u"Bonjour"_s}, now);
            QVERIFY(archive.wasShown(7));
        }
    }
};

QTEST_APPLESS_MAIN(HostileInputTest)
#include "HostileInputTest.moc"
