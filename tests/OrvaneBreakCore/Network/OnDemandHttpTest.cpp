// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnDemandHttp.h"

#include "Support/FakeHttp.h"
#include "Support/TestProgram.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

struct Fixture
{
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

    bool isModuleMissing = false;
    FakeHttp *made = nullptr;
    OnDemandHttp http{[this]() -> std::unique_ptr<Http> {
        auto result = isModuleMissing ? nullptr : std::make_unique<FakeHttp>();
        made = result.get();
        return result;
    }};
    QObject context;
    QList<std::optional<HttpAnswer>> answers;
};

} // namespace

class OnDemandHttpTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void theModuleSendsTheRequests()
    {
        Fixture f;
        f.get(u"https://makers.example/feed"_s);
        f.post(u"https://makers.example/check"_s);
        QCOMPARE(f.made->requests.size(), 2);
        QCOMPARE(f.made->requests.at(0).method, FakeHttp::Method::Get);
        QCOMPARE(f.made->requests.at(0).url, QUrl(u"https://makers.example/feed"_s));
        QCOMPARE(f.made->requests.at(0).limit, 20s);
        QCOMPARE(f.made->requests.at(1).method, FakeHttp::Method::Post);
        QCOMPARE(f.made->requests.at(1).body, "body");
        QCOMPARE(f.made->requests.at(1).limit, 20s);
        f.made->answer(HttpAnswer{200, "feed"});
        QCOMPARE(f.answers.size(), 1);
        QCOMPARE(f.answers.at(0)->body, "feed");
    }

    static void namesBelowInvalidDoNotLoadTheModule()
    {
        Fixture f;
        f.get(u"https://makers.invalid/feed"_s);
        f.post(u"https://makers.invalid/check"_s);
        QVERIFY(f.answers.isEmpty());
        QCoreApplication::processEvents();
        QVERIFY(f.areBothUnanswered());
        QVERIFY(!f.made);
    }

    static void withoutTheModuleThereIsNoAnswer()
    {
        Fixture f;
        f.isModuleMissing = true;
        f.get(u"https://makers.example/feed"_s);
        f.post(u"https://makers.example/check"_s);
        QVERIFY(f.answers.isEmpty());
        QCoreApplication::processEvents();
        QVERIFY(f.areBothUnanswered());
        QVERIFY(!f.made);

        f.isModuleMissing = false;
        f.get(u"https://makers.example/feed"_s);
        QCOMPARE(f.made->requests.size(), 1);
    }

    static void afterItsContextIsGoneARequestIsNotCompleted()
    {
        Fixture f;
        f.isModuleMissing = true;
        auto context = std::make_unique<QObject>();
        f.http.get(QUrl(u"https://makers.example/feed"_s), 20s, *context, f.completion());
        context.reset();
        QCoreApplication::processEvents();
        QVERIFY(f.answers.isEmpty());
    }
};

ORVANE_TEST(OnDemandHttpTest, QCoreApplication)
#include "OnDemandHttpTest.moc"
