// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnDemandDownloads.h"

#include "Support/FakeDownloads.h"
#include "Support/TestProgram.h"

#include <QCoreApplication>
#include <QTest>

#include <vector>

using namespace Qt::StringLiterals;

namespace {

struct Fixture
{
    [[nodiscard]] std::unique_ptr<Downloads::Exchange> get(qint64 offset)
    {
        return downloads.get(QUrl(u"https://makers.example/archive"_s), offset,
                             {nullptr, nullptr, [this](Downloads::End end) { ends.push_back(end); }});
    }

    bool isModuleMissing = false;
    FakeDownloads *made = nullptr;
    OnDemandDownloads downloads{[this]() -> std::unique_ptr<Downloads> {
        auto result = isModuleMissing ? nullptr : std::make_unique<FakeDownloads>();
        made = result.get();
        return result;
    }};
    std::vector<Downloads::End> ends;
};

} // namespace

class OnDemandDownloadsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void theModuleDownloads()
    {
        Fixture f;
        const auto first = f.get(0);
        const auto second = f.get(7);
        QCOMPARE(f.made->requests.size(), 2);
        QCOMPARE(f.made->requests.at(1).offset, 7);
        QCOMPARE(f.made->requests.at(1).url, QUrl(u"https://makers.example/archive"_s));
    }

    static void withoutTheModuleEachExchangeIsBroken()
    {
        Fixture f;
        f.isModuleMissing = true;
        const auto exchange = f.get(0);
        QVERIFY(f.ends.empty());
        QCoreApplication::processEvents();
        QCOMPARE(f.ends, std::vector{Downloads::End::Broken});

        f.isModuleMissing = false;
        const auto next = f.get(0);
        QCOMPARE(f.made->requests.size(), 1);
    }

    static void aDestroyedExchangeDoesNotReport()
    {
        Fixture f;
        f.isModuleMissing = true;
        f.get(0).reset();
        QCoreApplication::processEvents();
        QVERIFY(f.ends.empty());
    }
};

ORVANE_TEST(OnDemandDownloadsTest, QCoreApplication)
#include "OnDemandDownloadsTest.moc"
