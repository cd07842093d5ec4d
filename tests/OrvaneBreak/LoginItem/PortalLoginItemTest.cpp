// SPDX-License-Identifier: GPL-3.0-or-later
#include "PortalLoginItem.h"

#include "Support/SessionBusDaemon.h"
#include "Support/TestProgram.h"
#include "Support/ThreadedBusService.h"

#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDir>
#include <QFile>
#include <QMutex>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>

using namespace Qt::StringLiterals;

/// The portal for programs that want to run in the background and start at login.
class FakeBackground : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Background")

public:
    std::atomic<unsigned> response = 0;
    std::atomic<bool> isBackgroundAllowed = true;
    std::atomic<bool> isAutostartAllowed = true;
    std::atomic<bool> isCallRefused = false;
    std::atomic<int> answered = 0;

    [[nodiscard]] QVariantMap options()
    {
        const QMutexLocker lock(&m_mutex);
        return m_options;
    }

public Q_SLOTS:
    /// Responds before the caller knows the handle, as fast portals do.
    QDBusObjectPath RequestBackground(const QString & /*parent*/, const QVariantMap &options)
    {
        const QMutexLocker lock(&m_mutex);
        m_options = options;
        ++answered;
        if (isCallRefused) {
            sendErrorReply(QDBusError::AccessDenied, u"no"_s);
            return QDBusObjectPath(u"/"_s);
        }
        const QString sender = message().service().mid(1).replace(u'.', u'_');
        const QString handle = u"/org/freedesktop/portal/desktop/request/"_s + sender + u'/' +
                               options.value(u"handle_token"_s).toString();
        QDBusMessage signal = QDBusMessage::createTargetedSignal(
            message().service(), handle, u"org.freedesktop.portal.Request"_s, u"Response"_s);
        const bool isAutostart = options.value(u"autostart"_s).toBool() && isAutostartAllowed;
        signal << response.load()
               << QVariantMap{{u"background"_s, isBackgroundAllowed.load()}, {u"autostart"_s, isAutostart}};
        connection().send(signal);
        return QDBusObjectPath(handle);
    }

private:
    QMutex m_mutex;
    QVariantMap m_options;
};

/// The login item with a fake portal on a bus of its own.
class PortalLoginItemTest : public QObject
{
    Q_OBJECT

    /// A program and a portal, with the host's autostart folder.
    struct Sandbox
    {
        SessionBusDaemon daemon;
        QTemporaryDir folder;
        ThreadedBusService<FakeBackground> portal{daemon.address(), u"org.freedesktop.portal.Desktop"_s,
                                                  u"/org/freedesktop/portal/desktop"_s};
        QString file = folder.filePath(u"ch.example.Eyes.desktop"_s);
        PortalLoginItem item{{file, u"/app/bin/orvanebreak"_s, {}, false},
                             QDBusConnection::connectToBus(daemon.address(), u"program"_s)};
        int refusals = 0;

        Sandbox()
        {
            item.onRefused = [this] { ++refusals; };
        }
        ~Sandbox() { QDBusConnection::disconnectFromBus(u"program"_s); }
        Sandbox(const Sandbox &) = delete;
        Sandbox &operator=(const Sandbox &) = delete;

        void writeEntry() const
        {
            QFile written(file);
            QVERIFY(written.open(QIODevice::WriteOnly));
            written.write("[Desktop Entry]\nType=Application\nExec=flatpak run ch.example.Eyes\n");
        }
    };

private Q_SLOTS:
    void thePortalIsAskedForIt_data()
    {
        QTest::addColumn<bool>("isWanted");
        QTest::newRow("on") << true;
        QTest::newRow("off") << false;
    }

    void thePortalIsAskedForIt()
    {
        QFETCH(const bool, isWanted);
        Sandbox s;
        QVERIFY(s.portal.isRegistered);
        QVERIFY(s.item.setEnabled(isWanted));
        QTRY_COMPARE(s.portal.object.answered.load(), 1);
        const QVariantMap options = s.portal.object.options();
        QCOMPARE(options.value(u"autostart"_s).toBool(), isWanted);
        QCOMPARE(options.value(u"commandline"_s).toStringList(), QStringList{u"orvanebreak"_s});
        QVERIFY(!options.value(u"reason"_s).toString().isEmpty());
        // A second request, which is refused, shows that the first was not.
        s.portal.object.response = 1;
        QTest::ignoreMessage(QtInfoMsg, "OrvaneBreak: ouverture à la connexion: refused by the portal");
        QVERIFY(s.item.setEnabled(isWanted));
        QTRY_COMPARE(s.refusals, 1);
    }

    void stateIsWhatTheSessionHasRegistered()
    {
        Sandbox s;
        QVERIFY(!s.item.isEnabled());
        s.writeEntry();
        QVERIFY(s.item.isEnabled());
    }

    void refusals_data()
    {
        QTest::addColumn<unsigned>("response");
        QTest::addColumn<bool>("isBackgroundAllowed");
        QTest::addColumn<bool>("isAutostartAllowed");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("cancelled") << 1U << true << true << QByteArray("refused by the portal");
        QTest::newRow("no background") << 0U << false << true << QByteArray("refused by the portal");
        QTest::newRow("no autostart") << 0U << true << false << QByteArray("autostart refused by the portal");
    }

    void refusals()
    {
        QFETCH(const unsigned, response);
        QFETCH(const bool, isBackgroundAllowed);
        QFETCH(const bool, isAutostartAllowed);
        QFETCH(const QByteArray, reason);
        Sandbox s;
        s.portal.object.response = response;
        s.portal.object.isBackgroundAllowed = isBackgroundAllowed;
        s.portal.object.isAutostartAllowed = isAutostartAllowed;
        QTest::ignoreMessage(QtInfoMsg, "OrvaneBreak: ouverture à la connexion: " + reason);
        QVERIFY(s.item.setEnabled(true));
        QTRY_COMPARE(s.refusals, 1);
    }

    void aCallThatFailsIsARefusal()
    {
        Sandbox s;
        s.portal.object.isCallRefused = true;
        QTest::ignoreMessage(QtInfoMsg, "OrvaneBreak: ouverture à la connexion: "
                                        "org.freedesktop.DBus.Error.AccessDenied");
        QVERIFY(s.item.setEnabled(true));
        QTRY_COMPARE(s.refusals, 1);
    }

    void backgroundLeavesTheLoginItemAsItIs()
    {
        Sandbox s;
        s.item.requestBackground();
        QTRY_COMPARE(s.portal.object.answered.load(), 1);
        QVERIFY(!s.portal.object.options().value(u"autostart"_s).toBool());
        s.writeEntry();
        s.item.requestBackground();
        QTRY_COMPARE(s.portal.object.answered.load(), 2);
        QVERIFY(s.portal.object.options().value(u"autostart"_s).toBool());
    }

    void withoutABusItIsAFailure()
    {
        PortalLoginItem item({u"/nowhere"_s, u"/app/bin/orvanebreak"_s, {}}, QDBusConnection(u"none"_s));
        QTest::ignoreMessage(QtInfoMsg, "OrvaneBreak: ouverture à la connexion: no session bus");
        QVERIFY(!item.setEnabled(true));
        item.requestBackground();
    }

    void standardPlaceIsTheHosts()
    {
        qputenv("XDG_CONFIG_HOME", "/sandbox");
        qputenv("HOST_XDG_CONFIG_HOME", "/host");
        const QString entry = u"/autostart/ch.example.Eyes.desktop"_s;
        QCOMPARE(PortalLoginItem::standardParameters(u"ch.example.Eyes"_s).file, u"/host"_s + entry);
        qunsetenv("HOST_XDG_CONFIG_HOME");
        QCOMPARE(PortalLoginItem::standardParameters(u"ch.example.Eyes"_s).file,
                 QDir::homePath() + u"/.config"_s + entry);
    }
};

ORVANE_TEST(PortalLoginItemTest, QCoreApplication)
#include "PortalLoginItemTest.moc"
