// SPDX-License-Identifier: GPL-3.0-or-later
#include "ServerChannel.h"

#include "Bundle.h"
#include "SharedInstance.h"
#include "Support/FakeHttp.h"
#include "Support/ManualRunLoop.h"
#include "Support/MemoryPreferences.h"
#include "Support/Signer.h"
#include "Support/TestProgram.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

struct Fixture
{
    explicit Fixture(const QByteArray &information = R"({"CFBundleShortVersionString": "1.2.3"})")
        : bundle(bundleWith(information))
    {
    }

    Bundle bundleWith(const QByteArray &information) const
    {
        QFile file(folder.filePath(u"Info.json"_s));
        if (file.open(QIODevice::WriteOnly))
            file.write(information);
        file.close();
        return Bundle(folder.path());
    }

    /// Answers the waiting check-in with a message that the makers signed.
    void answerCheckIn(qint64 id, const QString &message)
    {
        http.answer(
            HttpAnswer{200, jsonBytes(makers.answer(http.requests.constFirst().json()[u"n"_s].toString(),
                                                    unixSeconds(runLoop.now()), id, message))});
    }

    void checkIn(qint64 id, const QString &message)
    {
        channel.checkWithServer([] {});
        answerCheckIn(id, message);
    }

    Signer makers;
    QTemporaryDir folder;
    FakeHttp http;
    MemoryPreferences preferences;
    ManualRunLoop runLoop;
    Bundle bundle;
    ServerChannel channel{{http, preferences, runLoop, bundle, {15, 0, 1}},
                          {u"https://makers.invalid"_s, makers.publicKeyBase64()}};
};

} // namespace

/// The channel without a network.
class ServerChannelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void sharedIsTheRegisteredChannel()
    {
        Fixture f;
        const SharedInstance<ServerChannel> shared(f.channel);
        QCOMPARE(&ServerChannel::shared(), &f.channel);
    }

    static void theIdentifierIsCreatedOnceAndStored()
    {
        Fixture f;
        const QString id = f.channel.deviceId();
        static const QRegularExpression uuid(
            u"^[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}$"_s);
        QVERIFY(uuid.match(id).hasMatch());
        QCOMPARE(f.channel.deviceId(), id);
        QCOMPARE(f.preferences.text(u"OBDeviceId"_s), std::optional(id));
        f.preferences.setValue(u"OBDeviceId"_s, u"abc"_s);
        QCOMPARE(f.channel.deviceId(), u"abc"_s);
    }

    static void theSystemIsSentWithoutItsPatchVersion()
    {
        const Fixture f;
        QCOMPARE(f.channel.osString(), u"macOS 15.0"_s);
        const SystemVersion debian = SystemVersion::parse("6.1.0-18-amd64");
        QCOMPARE(debian.major, 6);
        QCOMPARE(debian.minor, 1);
        QCOMPARE(SystemVersion::parse("6.9-rc1").minor, 9);
        QCOMPARE(SystemVersion::parse("nonsense").major, 0);
    }

    static void theRequestOfACheckIn()
    {
        Fixture f;
        f.channel.checkWithServer([] {});
        QCOMPARE(f.http.requests.size(), 1);
        const FakeHttp::Request &request = f.http.requests.constFirst();
        QCOMPARE(request.url, QUrl(u"https://makers.invalid/api/check.php"_s));
        QCOMPARE(request.limit, 8s);
        const QJsonObject body = request.json();
        QCOMPARE(body.keys(), (QStringList{u"c"_s, u"d"_s, u"n"_s, u"os"_s, u"v"_s}));
        QCOMPARE(body[u"c"_s], QJsonValue(u"direct"_s));
        QCOMPARE(body[u"d"_s], QJsonValue(f.channel.deviceId()));
        QCOMPARE(body[u"os"_s], QJsonValue(u"macOS 15.0"_s));
        QCOMPARE(body[u"v"_s], QJsonValue(u"1.2.3"_s));
        static const QRegularExpression digits(u"^[0-9A-F]{32}$"_s);
        QVERIFY(digits.match(body[u"n"_s].toString()).hasMatch());
        f.channel.checkWithServer([] {});
        QVERIFY(f.http.requests.at(1).json()[u"n"_s] != body[u"n"_s]);
    }

    static void aBundleWithoutVersion()
    {
        Fixture f("{}");
        f.channel.checkWithServer([] {});
        QCOMPARE(f.http.requests.constFirst().json()[u"v"_s], QJsonValue(u"?"_s));
    }

    static void anAcknowledgementIsSentIfThereIsOne()
    {
        Fixture f;
        for (const qint64 id : {0, -5}) {
            f.preferences.setValue(u"OBAckMessage"_s, id);
            f.channel.checkWithServer([] {});
            QVERIFY(!f.http.requests.takeFirst().json().contains(u"m"_s));
        }
        f.preferences.setValue(u"OBAckMessage"_s, qint64(9007199254740993));
        f.channel.checkWithServer([] {});
        QVERIFY(f.http.requests.constFirst().body.contains("\"m\":9007199254740993"));
    }

    static void aMessageBecomesPendingAndThenShown()
    {
        Fixture f;
        int completions = 0;
        f.channel.checkWithServer([&completions] { ++completions; });
        QCOMPARE(completions, 0);
        f.answerCheckIn(7, u"Bonjour"_s);
        QCOMPARE(completions, 1);
        QCOMPARE(f.channel.pendingMessage(), std::optional(ServerMessage{7, u"Bonjour"_s}));
        f.channel.markMessageShown();
        QVERIFY(!f.channel.pendingMessage());
        QCOMPARE(f.channel.messageHistory().size(), 1);
        f.checkIn(7, u"Bonjour"_s);
        QVERIFY(!f.channel.pendingMessage());
        f.channel.markMessageShown();
        QCOMPARE(f.channel.messageHistory().size(), 1);
    }

    static void theStatusOfACheckInIsIgnored()
    {
        Fixture f;
        f.channel.checkWithServer([] {});
        const QString nonce = f.http.requests.constFirst().json()[u"n"_s].toString();
        f.http.answer(HttpAnswer{
            500, jsonBytes(f.makers.answer(nonce, unixSeconds(f.runLoop.now()), 7, u"Bonjour"_s))});
        QVERIFY(f.channel.pendingMessage());
    }

    static void nothingElseClearsAPendingMessage()
    {
        Fixture f;
        f.checkIn(7, u"Bonjour"_s);
        f.checkIn(0, u"Bonjour"_s);
        f.checkIn(8, u""_s);
        bool isCompleted = false;
        f.channel.checkWithServer([&isCompleted] { isCompleted = true; });
        f.http.answer(std::nullopt);
        QVERIFY(isCompleted);
        QCOMPARE(f.channel.pendingMessage()->id, 7);
        f.checkIn(8, u"Bonsoir"_s);
        QCOMPARE(f.channel.pendingMessage()->id, 8);
    }

    static void overlappingCheckInsHaveTheirOwnNonces()
    {
        Fixture f;
        f.channel.checkWithServer([] {});
        f.channel.checkWithServer([] {});
        std::swap(f.http.requests[0].completion, f.http.requests[1].completion);
        f.answerCheckIn(7, u"Bonjour"_s);
        QVERIFY(!f.channel.pendingMessage());
    }

    static void theShownMessageIsMarkedEvenIfTheNextHasArrived()
    {
        Fixture f;
        f.checkIn(7, u"Bonjour"_s);
        const ServerMessage shown = *f.channel.pendingMessage();
        f.checkIn(8, u"Bonsoir"_s);
        f.channel.markMessageShown(shown);
        QCOMPARE(f.channel.pendingMessage()->id, 8);
        QCOMPARE(f.channel.messageHistory().constFirst().id, 7);
    }

    static void aMessageEditedWhileItIsShownIsNotPendingAgain()
    {
        Fixture f;
        f.checkIn(7, u"Bonjour"_s);
        const ServerMessage shown = *f.channel.pendingMessage();
        f.checkIn(7, u"Bonsoir"_s);
        f.channel.markMessageShown(shown);
        QVERIFY(!f.channel.pendingMessage());
        QCOMPARE(f.channel.messageHistory().size(), 1);
        QCOMPARE(f.channel.messageHistory().constFirst().body, u"Bonjour"_s);
    }

    static void theRequestOfAReport()
    {
        Fixture f;
        f.channel.reportProblem(u" Ça ne va pas "_s, u" moi@exemple.ch "_s, [](bool) {});
        const FakeHttp::Request request = f.http.requests.takeFirst();
        QCOMPARE(request.url, QUrl(u"https://makers.invalid/api/report.php"_s));
        QCOMPARE(request.limit, 10s);
        const QJsonObject body = request.json();
        QCOMPARE(body.keys(), (QStringList{u"d"_s, u"email"_s, u"os"_s, u"text"_s, u"v"_s}));
        QCOMPARE(body[u"text"_s], QJsonValue(u" Ça ne va pas "_s));
        QCOMPARE(body[u"email"_s], QJsonValue(u" moi@exemple.ch "_s));
        f.channel.reportProblem(u"sans adresse"_s, u""_s, [](bool) {});
        QVERIFY(!f.http.requests.constFirst().json().contains(u"email"_s));
    }

    static void whatCountsAsAccepted_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("ok") << 200 << QByteArray(R"({"ok":true})") << true;
        QTest::newRow("ok and more") << 200 << QByteArray(R"({"ok":true,"id":5})") << true;
        QTest::newRow("not ok") << 200 << QByteArray(R"({"ok":false})") << false;
        QTest::newRow("error") << 500 << QByteArray(R"({"ok":true})") << false;
        QTest::newRow("created") << 201 << QByteArray(R"({"ok":true})") << false;
        QTest::newRow("number") << 200 << QByteArray(R"({"ok":1})") << false;
        QTest::newRow("text") << 200 << QByteArray(R"({"ok":"true"})") << false;
        QTest::newRow("missing") << 200 << QByteArray("{}") << false;
        QTest::newRow("array") << 200 << QByteArray("[true]") << false;
        QTest::newRow("page") << 200 << QByteArray("<html>") << false;
        QTest::newRow("empty") << 200 << QByteArray() << false;
    }

    static void whatCountsAsAccepted()
    {
        QFETCH(const int, status);
        QFETCH(const QByteArray, body);
        Fixture f;
        std::optional<bool> result;
        f.channel.reportProblem(u"texte"_s, {}, [&result](bool isAccepted) { result = isAccepted; });
        f.http.answer(HttpAnswer{status, body});
        QVERIFY(result);
        QTEST(*result, "accepted");
        f.channel.reportProblem(u"texte"_s, {}, [&result](bool isAccepted) { result = isAccepted; });
        f.http.answer(std::nullopt);
        QVERIFY(!*result);
    }

    static void allowedAddresses()
    {
        for (const QString &address :
             {u"https://makers.invalid"_s, u"http://127.0.0.1:8471"_s, u"http://[::1]/"_s})
            QVERIFY2(Http::isAllowed(QUrl(address)), qPrintable(address));
        for (const QString &address :
             {u"http://makers.invalid"_s, u"http://localhost"_s, u"ftp://127.0.0.1"_s, u"https://"_s, u""_s,
              u"file:///etc/passwd"_s, u"http://127.0.0.1.evil.invalid"_s, u"https://a:b@makers.invalid"_s})
            QVERIFY2(!Http::isAllowed(QUrl(address)), qPrintable(address));
    }
};

ORVANE_TEST(ServerChannelTest, QCoreApplication)
#include "ServerChannelTest.moc"
