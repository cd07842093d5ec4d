// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnDemandDownloads.h"

#include "Http.h"
#include "Support/FakeDownloads.h"
#include "Support/TestProgram.h"

#include <QCoreApplication>
#include <QTest>

#include <vector>

using namespace Qt::StringLiterals;

namespace {

FakeDownloads *made = nullptr;

class FakeModule final : public NetworkModule
{
public:
    [[nodiscard]] std::unique_ptr<Http> makeHttp() const override { return nullptr; }
    [[nodiscard]] std::unique_ptr<Downloads> makeDownloads() const override
    {
        auto downloads = std::make_unique<FakeDownloads>();
        made = downloads.get();
        return downloads;
    }
};

const FakeModule module;

struct Fixture
{
    Fixture() { made = nullptr; }

    [[nodiscard]] std::unique_ptr<Downloads::Exchange> get(qint64 offset)
    {
        return downloads.get(QUrl(u"https://makers.example/archive"_s), offset,
                             {nullptr, nullptr, [this](Downloads::End end) { ends.push_back(end); }});
    }

    bool isThere = true;
    int loads = 0;
    OnDemandDownloads downloads{[this] {
        ++loads;
        return isThere ? &module : nullptr;
    }};
    std::vector<Downloads::End> ends;
};

} // namespace

class OnDemandDownloadsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void theFirstDownloadLoads()
    {
        Fixture f;
        QCOMPARE(f.loads, 0);
        const auto first = f.get(0);
        const auto second = f.get(7);
        QCOMPARE(f.loads, 1);
        QCOMPARE(made->requests.size(), 2);
        QCOMPARE(made->requests.at(1).offset, 7);
        QCOMPARE(made->requests.at(1).url, QUrl(u"https://makers.example/archive"_s));
    }

    static void withoutTheModuleEachIsBroken()
    {
        Fixture f;
        f.isThere = false;
        const auto exchange = f.get(0);
        QVERIFY(f.ends.empty());
        QCoreApplication::processEvents();
        QCOMPARE(f.ends, std::vector{Downloads::End::Broken});

        f.isThere = true;
        const auto next = f.get(0);
        QCOMPARE(made->requests.size(), 1);
    }

    static void oneThatWasGivenUpSaysNothing()
    {
        Fixture f;
        f.isThere = false;
        f.get(0).reset();
        QCoreApplication::processEvents();
        QVERIFY(f.ends.empty());
    }
};

ORVANE_TEST(OnDemandDownloadsTest, QCoreApplication)
#include "OnDemandDownloadsTest.moc"
