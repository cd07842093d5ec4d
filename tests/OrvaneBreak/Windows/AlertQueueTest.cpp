// SPDX-License-Identifier: GPL-3.0-or-later
#include "AlertQueue.h"

#include "Support/ApplicationFixture.h"
#include "Support/TestProgram.h"

#include <QApplication>
#include <QTest>

using namespace Qt::StringLiterals;

class AlertQueueTest : public QObject
{
    Q_OBJECT

    struct Fixture : EngineFixture
    {
        QDialog *add(const QString &name, AlertQueue::Attention attention)
        {
            auto dialog = std::make_unique<QDialog>();
            QDialog *added = dialog.get();
            dialog->setObjectName(name);
            alerts.add(std::move(dialog), {}, attention);
            return added;
        }

        FakeWindowPresence presence;
        AlertQueue alerts{engine, presence};
    };

private Q_SLOTS:
    void aDialogWaitsForTheEndOfABreak_data()
    {
        QTest::addColumn<AlertQueue::Attention>("attention");
        QTest::newRow("front") << AlertQueue::Attention::Front;
        QTest::newRow("quiet") << AlertQueue::Attention::Quiet;
    }

    void aDialogWaitsForTheEndOfABreak()
    {
        QFETCH(const AlertQueue::Attention, attention);
        Fixture f;
        f.engine.breakNow();
        const QDialog *dialog = f.add(u"dialog"_s, attention);
        f.alerts.proceed();
        QVERIFY(!dialog->isVisible());
        QVERIFY(f.alerts.isBusy());
        f.engine.stop();
        f.alerts.proceed();
        QVERIFY(dialog->isVisible());
    }

    void onlyAFrontDialogTakesTheFocusAndHoldsOthersBack()
    {
        Fixture f;
        const QDialog *quiet = f.add(u"quiet"_s, AlertQueue::Attention::Quiet);
        QVERIFY(quiet->isVisible() && !quiet->isModal());
        QVERIFY(f.presence.log.isEmpty());
        QVERIFY(!f.alerts.isBusy());
        const QDialog *front = f.add(u"front"_s, AlertQueue::Attention::Front);
        QVERIFY(front->isVisible() && front->isModal());
        QCOMPARE(f.presence.log, QStringList{u"front front"_s});
        QCOMPARE(f.presence.adopted, (QStringList{u"quiet"_s, u"front"_s}));
        const QDialog *next = f.add(u"next"_s, AlertQueue::Attention::Quiet);
        QVERIFY(!next->isVisible());
    }
};

ORVANE_TEST(AlertQueueTest, QApplication)
#include "AlertQueueTest.moc"
