// SPDX-License-Identifier: GPL-3.0-or-later
#include "CheckInAnswer.h"

#include "Support/Signer.h"
#include "Support/TestProgram.h"

#include <QFile>
#include <QJsonArray>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString nonce = u"0F1E2D3C4B5A69788796A5B4C3D2E1F0"_s;
const Date now(1'700'000'000s);

QString described(const CheckInVerdict &verdict)
{
    if (const auto *message = std::get_if<ServerMessage>(&verdict))
        return u"message %1: %2"_s.arg(message->id).arg(message->text);
    if (const auto *refusal = std::get_if<CheckInRefusal>(&verdict))
        return u"refusal %1"_s.arg(static_cast<int>(*refusal));
    return u"nothing"_s;
}

} // namespace

#define COMPARE_VERDICT(actual, expected) QCOMPARE(described(actual), described(CheckInVerdict(expected)))

/// Which answers of a server are accepted.
class CheckInAnswerTest : public QObject
{
    Q_OBJECT

    Signer m_makers;

    [[nodiscard]] CheckInVerdict judge(const QByteArray &body, Date date = now) const
    {
        return judgeCheckInAnswer(body, nonce, m_makers.publicKeyBase64(), date);
    }

    [[nodiscard]] QJsonObject good(qint64 id = 7, const QString &message = u"Bonjour"_s) const
    {
        return m_makers.answer(nonce, 1'700'000'000, id, message);
    }

    /// A good answer with one member replaced by `literal`; the signature is not adjusted.
    [[nodiscard]] QByteArray withLiteral(const QString &member, const QByteArray &literal) const
    {
        QJsonObject object = good();
        object.insert(member, u"@"_s);
        return jsonBytes(object).replace("\"@\"", literal);
    }

private Q_SLOTS:
    static void knownAnswers_data()
    {
        QFile file(QStringLiteral(ORVANE_FIXTURES) + u"/known-answers.json"_s);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject fixture = QJsonDocument::fromJson(file.readAll()).object();
        QTest::addColumn<QJsonObject>("known");
        QTest::addColumn<QByteArray>("key");
        for (const QJsonValue known : fixture[u"cases"_s].toArray())
            QTest::newRow(qPrintable(known[u"name"_s].toString()))
                << known.toObject() << fixture[u"publicKey"_s].toString().toLatin1();
        QVERIFY(fixture[u"cases"_s].toArray().size() >= 10);
    }

    static void knownAnswers()
    {
        QFETCH(const QJsonObject, known);
        QFETCH(const QByteArray, key);
        const QString text = known[u"msg"_s].toString();
        const qint64 id = known[u"mid"_s].toInteger();
        const qint64 timestamp = known[u"ts"_s].toInteger();
        const QString itsNonce = known[u"nonce"_s].toString();
        QCOMPARE(canonicalCheckInText(itsNonce.toStdString(), timestamp, id, text.toStdString()),
                 known[u"canonical"_s].toString().toUtf8());
        const QJsonObject answer{{u"n"_s, itsNonce},
                                 {u"ts"_s, timestamp},
                                 {u"mid"_s, id},
                                 {u"msg"_s, text},
                                 {u"sig"_s, known[u"signature"_s]}};
        // Years beyond what a date can hold are far from any clock.
        const bool isReachable =
            timestamp <= std::chrono::floor<std::chrono::seconds>(Date::max()).time_since_epoch().count();
        const Date date = isReachable ? Date(std::chrono::seconds(timestamp)) : Date::max();
        const CheckInVerdict verdict = judgeCheckInAnswer(jsonBytes(answer), itsNonce, key, date);
        if (!isReachable)
            COMPARE_VERDICT(verdict, CheckInRefusal::Stale);
        else if (id >= 1 && !text.isEmpty())
            COMPARE_VERDICT(verdict, (ServerMessage{id, text}));
        else
            COMPARE_VERDICT(verdict, std::monostate());
    }

    void acceptsTheMakersMessages()
    {
        COMPARE_VERDICT(judge(jsonBytes(good())), (ServerMessage{7, u"Bonjour"_s}));
        const qint64 large = 9007199254740993;
        COMPARE_VERDICT(judge(jsonBytes(good(large))), (ServerMessage{large, u"Bonjour"_s}));
        const qint64 largest = std::numeric_limits<qint64>::max();
        COMPARE_VERDICT(judge(jsonBytes(good(largest))), (ServerMessage{largest, u"Bonjour"_s}));
    }

    void anAnswerWithoutMessageIsEmpty()
    {
        COMPARE_VERDICT(judge(jsonBytes(good(0))), std::monostate());
        COMPARE_VERDICT(judge(jsonBytes(good(-3))), std::monostate());
        COMPARE_VERDICT(judge(jsonBytes(good(7, u""_s))), std::monostate());
    }

    void furtherMembersAreIgnored()
    {
        QJsonObject answer = good();
        answer.insert(u"extra"_s, QJsonArray{1, 2});
        COMPARE_VERDICT(judge(jsonBytes(answer)), (ServerMessage{7, u"Bonjour"_s}));
    }

    static void malformed_data()
    {
        QTest::addColumn<QString>("member");
        QTest::addColumn<QByteArray>("literal");
        for (const QString &member : {u"ts"_s, u"mid"_s}) {
            for (const char *literal :
                 {"true", "1.5", "1e3", "1.0", "\"7\"", "null", "[7]", "9223372036854775808",
                  "-9223372036854775809", "18446744073709551616", "1e999"})
                QTest::addRow("%s %s", qPrintable(member), literal) << member << QByteArray(literal);
        }
        for (const QString &member : {u"n"_s, u"msg"_s, u"sig"_s}) {
            for (const char *literal :
                 {"7", "true", "null", "[]", "{}", "\"\\ud800\"", "\"\xff\"", "\"\xc0\x80\""})
                QTest::addRow("%s %s", qPrintable(member), literal) << member << QByteArray(literal);
        }
    }

    void malformed()
    {
        QFETCH(const QString, member);
        QFETCH(const QByteArray, literal);
        COMPARE_VERDICT(judge(withLiteral(member, literal)), CheckInRefusal::Malformed);
    }

    void missingMembersAndOtherBodies()
    {
        for (const QString &member : good().keys()) {
            QJsonObject answer = good();
            answer.remove(member);
            COMPARE_VERDICT(judge(jsonBytes(answer)), CheckInRefusal::Malformed);
        }
        const QByteArray whole = jsonBytes(good());
        for (const QByteArray &body :
             {QByteArray(), QByteArray("{}"), QByteArray("[]"), QByteArray("null"), QByteArray("<html>"),
              QByteArray("{\"n\":"), whole.chopped(1), whole + "x", whole + whole, QByteArray(200'000, '['),
              QByteArray(200'000, '{'), QByteArray("{\"a\":").repeated(100'000)})
            COMPARE_VERDICT(judge(body), CheckInRefusal::Malformed);
    }

    void ofDuplicateMembersTheLastIsVerifiedAndShown()
    {
        QByteArray body = jsonBytes(good());
        body.chop(1);
        COMPARE_VERDICT(judge(body + R"(,"msg":"Autre chose"})"), CheckInRefusal::Signature);
        COMPARE_VERDICT(judge("{\"msg\":\"Autre chose\"," + body.mid(1) + '}'),
                        (ServerMessage{7, u"Bonjour"_s}));
    }

    void aNulInAMessageIsKept()
    {
        const QString text = u"avant"_s + QChar(0) + u"après"_s;
        COMPARE_VERDICT(judge(jsonBytes(good(7, text))), (ServerMessage{7, text}));
    }

    void foreignNonce()
    {
        COMPARE_VERDICT(judge(jsonBytes(m_makers.answer(nonce.toLower(), 1'700'000'000, 7, u"Bonjour"_s))),
                        CheckInRefusal::ForeignNonce);
    }

    void signatureEncodings()
    {
        QJsonObject answer = good();
        const QByteArray url = answer[u"sig"_s].toString().toLatin1();
        const QByteArray padded = QByteArray::fromBase64(url, QByteArray::Base64UrlEncoding).toBase64();
        QVERIFY(padded.endsWith('='));
        answer.insert(u"sig"_s, QString::fromLatin1(padded));
        COMPARE_VERDICT(judge(jsonBytes(answer)), (ServerMessage{7, u"Bonjour"_s}));
        answer.insert(u"sig"_s, u"*not base64*"_s);
        COMPARE_VERDICT(judge(jsonBytes(answer)), CheckInRefusal::SignatureEncoding);
        for (const QString &text : {u""_s, u"AAAA"_s, QString::fromLatin1(padded + padded)}) {
            answer.insert(u"sig"_s, text);
            const CheckInVerdict verdict = judge(jsonBytes(answer));
            QVERIFY(std::holds_alternative<CheckInRefusal>(verdict));
        }
    }

    void invalidKeys()
    {
        for (const QByteArray &key :
             {QByteArray(), QByteArray("AAAA"), QByteArray("*"), m_makers.publicKeyBase64() + "AA=="})
            COMPARE_VERDICT(judgeCheckInAnswer(jsonBytes(good()), nonce, key, now),
                            CheckInRefusal::PublicKey);
    }

    void everySignedPartCounts()
    {
        const Signer others;
        COMPARE_VERDICT(judge(jsonBytes(others.answer(nonce, 1'700'000'000, 7, u"Bonjour"_s))),
                        CheckInRefusal::Signature);
        QJsonObject answer = good();
        answer.insert(u"mid"_s, 8);
        COMPARE_VERDICT(judge(jsonBytes(answer)), CheckInRefusal::Signature);
        answer = good();
        answer.insert(u"ts"_s, 1'700'000'001);
        COMPARE_VERDICT(judge(jsonBytes(answer)), CheckInRefusal::Signature);
        answer = good();
        answer.insert(u"msg"_s, u"Bonjour "_s);
        COMPARE_VERDICT(judge(jsonBytes(answer)), CheckInRefusal::Signature);
    }

    void freshness()
    {
        const ServerMessage message{7, u"Bonjour"_s};
        const QByteArray body = jsonBytes(good());
        COMPARE_VERDICT(judge(body, now + 599s), message);
        COMPARE_VERDICT(judge(body, now - 599s), message);
        COMPARE_VERDICT(judge(body, now + 600s - 1us), message);
        COMPARE_VERDICT(judge(body, now + 600s), CheckInRefusal::Stale);
        COMPARE_VERDICT(judge(body, now - 600s), CheckInRefusal::Stale);
        for (const qint64 extreme : {std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max()})
            COMPARE_VERDICT(judge(jsonBytes(m_makers.answer(nonce, extreme, 7, u"Bonjour"_s))),
                            CheckInRefusal::Stale);
    }

    void nonceThenSignatureThenClock()
    {
        const Signer others;
        const QByteArray wrongInAll = jsonBytes(others.answer(u"other"_s, 1, 7, u"Bonjour"_s));
        COMPARE_VERDICT(judge(wrongInAll), CheckInRefusal::ForeignNonce);
        COMPARE_VERDICT(judge(jsonBytes(others.answer(nonce, 1, 7, u"Bonjour"_s))),
                        CheckInRefusal::Signature);
        COMPARE_VERDICT(judge(jsonBytes(m_makers.answer(nonce, 1, 7, u"Bonjour"_s))), CheckInRefusal::Stale);
        COMPARE_VERDICT(judge(jsonBytes(m_makers.answer(u"other"_s, 1, 7, u"Bonjour"_s))),
                        CheckInRefusal::ForeignNonce);
        QJsonObject noBase64 = m_makers.answer(nonce, 1, 7, u"Bonjour"_s);
        noBase64.insert(u"sig"_s, u"*"_s);
        COMPARE_VERDICT(judgeCheckInAnswer(jsonBytes(noBase64), nonce, "*", now),
                        CheckInRefusal::SignatureEncoding);
    }
};

ORVANE_TEST(CheckInAnswerTest, TestProgram::NoApplication)
#include "CheckInAnswerTest.moc"
