// SPDX-License-Identifier: GPL-3.0-or-later
#include "SignedFeed.h"

#include "Support/FeedMaker.h"
#include "Support/Signer.h"
#include "Support/TestProgram.h"

#include <QCoreApplication>
#include <QThread>

using namespace Qt::StringLiterals;
using namespace FeedMaker;

namespace {

const QByteArray serial = "<o:serial xmlns:o='urn:orvanebreak:feed'>7</o:serial>";
const QByteArray expires =
    "<o:expires xmlns:o='urn:orvanebreak:feed'>Tue, 03 Mar 2026 10:00:00 +0000</o:expires>";

QByteArray signatureBy(const Signer &signer, const QByteArray &text)
{
    return QByteArray::fromBase64(signer.sign(text), QByteArray::Base64UrlEncoding).toBase64();
}

QByteArray signedBy(const Signer &signer, const QByteArray &content, const QByteArray &more = {})
{
    return content + "<!-- edSignature: " + signatureBy(signer, content) + more + " -->\n";
}

/// The words of the last line that name `later` as a key of the makers, certified by `signer`.
QByteArray certificate(const Signer &signer, const Signer &later)
{
    const QByteArray key = later.publicKeyBase64();
    return " key: " + key + " certificate: " + signatureBy(signer, "OrvaneBreak update key " + key);
}

Ed25519::PublicKey keyOf(const Signer &signer)
{
    return Ed25519::publicKey(signer.publicKeyBase64()).value();
}

FeedResult read(const QByteArray &bytes, const Signer &makers)
{
    return readSignedFeed(bytes, keyOf(makers), &Http::isAllowed);
}

/// Absent when the feed was read.
std::optional<FeedProblem> problem(const QByteArray &bytes, const Signer &makers)
{
    const FeedResult result = read(bytes, makers);
    const auto *found = std::get_if<FeedProblem>(&result);
    return found ? std::optional(*found) : std::nullopt;
}

bool isRead(const QByteArray &bytes, const Signer &makers)
{
    return !problem(bytes, makers);
}

} // namespace

class SignedFeedTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void aGenuineFeed()
    {
        const Signer makers;
        const FeedResult result = read(signedBy(makers, feed(serial + expires + wholeItem())), makers);
        QVERIFY(std::holds_alternative<Appcast>(result));
        QCOMPARE(std::get<Appcast>(result).serial, 7);
        QCOMPARE(std::get<Appcast>(result).items.size(), 1U);
        QVERIFY(std::get<Appcast>(result).items.front().laterKeys.empty());
    }

    static void aForgedFeed_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const Signer makers(Signer::Seed{1});
        const Signer thief(Signer::Seed{2});
        const QByteArray content = feed(serial + expires + wholeItem());
        const QByteArray genuine = signedBy(makers, content);
        QTest::newRow("unsigned") << content;
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("another key") << signedBy(thief, content);
        QTest::newRow("another text") << QByteArray(genuine).replace("1.3", "1.4");
        QTest::newRow("another serial number") << QByteArray(genuine).replace(">7<", ">8<");
        QTest::newRow("more in front") << " " + genuine;
        QTest::newRow("no signature") << content + "<!-- edSignature: -->";
        QTest::newRow("only the beginning") << content + "<!-- edSignature: ";
        QTest::newRow("long last line") << genuine.chopped(4) + QByteArray(5'000, ' ') + "-->";
        QTest::newRow("more behind") << genuine + "<rss/>";
        QTest::newRow("a key of its own") << signedBy(thief, content, certificate(thief, thief));
        QTest::newRow("a key without certificate")
            << signedBy(thief, content, " key: " + thief.publicKeyBase64() + " certificate: AAAA");
        QTest::newRow("a key signed as something else")
            << signedBy(thief, content,
                        " key: " + thief.publicKeyBase64() +
                            " certificate: " + signatureBy(makers, thief.publicKeyBase64()));
    }

    static void aForgedFeed()
    {
        QFETCH(const QByteArray, bytes);
        QCOMPARE(problem(bytes, Signer(Signer::Seed{1})), FeedProblem::NotGenuine);
    }

    static void aSignedFeedMustBeWhole()
    {
        const Signer makers;
        for (const QByteArray &content :
             {feed(serial + wholeItem()), feed(expires + wholeItem()),
              feed(QByteArray(serial).replace("7", "0") + expires), QByteArray("no feed")})
            QCOMPARE(problem(signedBy(makers, content), makers), FeedProblem::Unreadable);
    }

    static void keysFollowOneAnother()
    {
        const Signer first;
        const Signer second;
        const Signer third;
        const QByteArray content = feed(serial + expires + wholeItem());
        const QByteArray second_ = certificate(first, second);
        const QByteArray bytes = signedBy(third, content, second_ + certificate(second, third));
        for (const Signer *known : {&first, &second, &third})
            QVERIFY(isRead(bytes, *known));
        QVERIFY(!isRead(signedBy(third, content, certificate(second, third) + second_), first));
        const FeedResult result = read(bytes, first);
        QCOMPARE(std::get<Appcast>(result).items.front().laterKeys,
                 (std::vector{keyOf(second), keyOf(third)}));
        // Whoever has the later key trusts the first one no more.
        QVERIFY(!isRead(signedBy(first, content), second));
    }

    static void readOnAnotherThread()
    {
        const Signer makers;
        const QByteArray bytes = signedBy(makers, feed(serial + expires + wholeItem()));
        FeedThread thread;
        QObject context;
        int answers = 0;
        thread.read(bytes, keyOf(makers), &Http::isAllowed, context, [&](const FeedResult &result) {
            QVERIFY(std::holds_alternative<Appcast>(result));
            QCOMPARE(QThread::currentThread(), qApp->thread());
            ++answers;
        });
        QCOMPARE(answers, 0);
        QTRY_COMPARE(answers, 1);
        auto gone = std::make_unique<QObject>();
        thread.read(bytes, keyOf(makers), &Http::isAllowed, *gone, [&](const FeedResult &) { ++answers; });
        gone.reset();
        thread.read(bytes, keyOf(makers), &Http::isAllowed, context,
                    [&](const FeedResult &) { answers += 10; });
        QTRY_COMPARE(answers, 11);
    }
};

ORVANE_TEST(SignedFeedTest, QCoreApplication)
#include "SignedFeedTest.moc"
