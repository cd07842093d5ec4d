// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnDemandHttp.h"

#include "Downloads.h"
#include "Support/FakeHttp.h"
#include "Support/TestProgram.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

FakeHttp *made = nullptr;

class FakeModule final : public NetworkModule
{
public:
    [[nodiscard]] std::unique_ptr<Http> makeHttp() const override
    {
        auto http = std::make_unique<FakeHttp>();
        made = http.get();
        return http;
    }
    [[nodiscard]] std::unique_ptr<Downloads> makeDownloads() const override { return nullptr; }
};

const FakeModule module;

struct Fixture
{
    Fixture() { made = nullptr; }

    void get(const QString &address) { http.get(QUrl(address), 20s, context, completion()); }
    void post(const QString &address) { http.post(QUrl(address), "body", 20s, context, completion()); }

    Http::Completion completion()
    {
        return [this](const std::optional<HttpAnswer> &answer) { answers.append(answer); };
    }

    [[nodiscard]] bool areBothUnanswered() const
    {
        return answers.size() == 2 && !answers.at(0) && !answers.at(1);
    }

    bool isThere = true;
    int loads = 0;
    OnDemandHttp http{[this] {
        ++loads;
        return isThere ? &module : nullptr;
    }};
    QObject context;
    QList<std::optional<HttpAnswer>> answers;
};

} // namespace

class OnDemandHttpTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void theFirstRequestLoads()
    {
        Fixture f;
        QCOMPARE(f.loads, 0);
        f.get(u"https://makers.example/feed"_s);
        f.post(u"https://makers.example/check"_s);
        QCOMPARE(f.loads, 1);
        QCOMPARE(made->requests.size(), 2);
        QCOMPARE(made->requests.at(0).method, FakeHttp::Method::Get);
        QCOMPARE(made->requests.at(0).url, QUrl(u"https://makers.example/feed"_s));
        QCOMPARE(made->requests.at(0).limit, 20s);
        QCOMPARE(made->requests.at(1).method, FakeHttp::Method::Post);
        QCOMPARE(made->requests.at(1).body, "body");
        QCOMPARE(made->requests.at(1).limit, 20s);
        made->answer(HttpAnswer{200, "feed"});
        QCOMPARE(f.answers.size(), 1);
        QCOMPARE(f.answers.at(0)->body, "feed");
    }

    static void nobodyIsAskedNothing()
    {
        Fixture f;
        f.get(u"https://makers.invalid/feed"_s);
        f.post(u"https://makers.invalid/check"_s);
        QVERIFY(f.answers.isEmpty());
        QCoreApplication::processEvents();
        QVERIFY(f.areBothUnanswered());
        QCOMPARE(f.loads, 0);
    }

    static void withoutTheModuleThereIsNoAnswer()
    {
        Fixture f;
        f.isThere = false;
        f.get(u"https://makers.example/feed"_s);
        f.post(u"https://makers.example/check"_s);
        QVERIFY(f.answers.isEmpty());
        QCoreApplication::processEvents();
        QVERIFY(f.areBothUnanswered());
        QVERIFY(!made);

        f.isThere = true;
        f.get(u"https://makers.example/feed"_s);
        QCOMPARE(made->requests.size(), 1);
    }

    static void whoWentAwayIsNotAnswered()
    {
        Fixture f;
        f.isThere = false;
        auto context = std::make_unique<QObject>();
        f.http.get(QUrl(u"https://makers.example/feed"_s), 20s, *context, f.completion());
        context.reset();
        QCoreApplication::processEvents();
        QVERIFY(f.answers.isEmpty());
    }
};

ORVANE_TEST(OnDemandHttpTest, QCoreApplication)
#include "OnDemandHttpTest.moc"
