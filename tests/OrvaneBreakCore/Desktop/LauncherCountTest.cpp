// SPDX-License-Identifier: GPL-3.0-or-later
#include "LauncherCount.h"

#include "Support/SessionBusDaemon.h"
#include "Support/TestProgram.h"

#include <QTest>
#include <QVariantMap>

using namespace Qt::StringLiterals;

/// Records the signals that a launcher receives.
class Launcher : public QObject
{
    Q_OBJECT

public:
    explicit Launcher(const QString &address)
        : m_bus(QDBusConnection::connectToBus(address, u"launcher"_s))
    {
        qRegisterMetaType<QVariantMap>();
        m_bus.connect({}, {}, u"com.canonical.Unity.LauncherEntry"_s, u"Update"_s, this,
                      SLOT(update(QString, QVariantMap)));
    }

    ~Launcher() override { QDBusConnection::disconnectFromBus(u"launcher"_s); }
    Launcher(const Launcher &) = delete;
    Launcher &operator=(const Launcher &) = delete;

    bool appear() { return m_bus.registerService(u"com.canonical.Unity"_s); }

    QStringList received;

public Q_SLOTS:
    void update(const QString &entry, const QVariantMap &properties)
    {
        received << u"%1 %2 %3"_s.arg(entry)
                        .arg(properties.value(u"count"_s).toLongLong())
                        .arg(properties.value(u"count-visible"_s).toBool());
    }

private:
    QDBusConnection m_bus;
};

/// The number on the icon, on a private bus.
class LauncherCountTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void announcesChangesAndAnswersNewLaunchers()
    {
        const SessionBusDaemon daemon;
        Launcher launcher(daemon.address());
        LauncherCount count(u"ch.example.App"_s,
                            QDBusConnection::connectToBus(daemon.address(), u"program"_s));
        count.setCount(0);
        count.setCount(1);
        count.setCount(1);
        QTRY_COMPARE(launcher.received.size(), 1);
        QVERIFY(launcher.appear());
        QTRY_COMPARE(launcher.received.size(), 2);
        count.setCount(0);
        QTRY_COMPARE(launcher.received.size(), 3);
        const QString shown = u"application://ch.example.App.desktop 1 1"_s;
        QCOMPARE(launcher.received,
                 (QStringList{shown, shown, u"application://ch.example.App.desktop 0 0"_s}));
        QDBusConnection::disconnectFromBus(u"program"_s);
    }

    static void doesNothingWithoutABus()
    {
        LauncherCount count(u"ch.example.App"_s, QDBusConnection(u"none"_s));
        count.setCount(1);
    }
};

ORVANE_TEST(LauncherCountTest, QCoreApplication)
#include "LauncherCountTest.moc"
