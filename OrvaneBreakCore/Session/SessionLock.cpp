// SPDX-License-Identifier: GPL-3.0-or-later
#include "SessionLock.h"

#include "BusQuestion.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusObjectPath>

#include <chrono>

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds lockAnswerTimeout(5);

struct ScreenSaver
{
    QLatin1StringView service; ///< And its interface.
    QLatin1StringView path;
};

constexpr ScreenSaver screenSavers[] = {
    {"org.freedesktop.ScreenSaver"_L1, "/org/freedesktop/ScreenSaver"_L1},
    {"org.freedesktop.ScreenSaver"_L1, "/ScreenSaver"_L1},
    {"org.gnome.ScreenSaver"_L1, "/org/gnome/ScreenSaver"_L1},
    {"org.cinnamon.ScreenSaver"_L1, "/org/cinnamon/ScreenSaver"_L1},
    {"org.mate.ScreenSaver"_L1, "/org/mate/ScreenSaver"_L1},
    {"org.xfce.ScreenSaver"_L1, "/org/xfce/ScreenSaver"_L1},
};

const QString login = u"org.freedesktop.login1"_s;
const QString loginPath = u"/org/freedesktop/login1"_s;
const QString loginManager = u"org.freedesktop.login1.Manager"_s;
const QString loginSession = u"org.freedesktop.login1.Session"_s;
const QString properties = u"org.freedesktop.DBus.Properties"_s;
const QString lockedHint = u"LockedHint"_s;
const QString suspend = u"suspend"_s; ///< Among the services that report a lock.

/// The object path of a session reference, which is a name and a path; empty for any other value and for the
/// reference to no session.
QString sessionPath(const QVariant &reference)
{
    QString name;
    QDBusObjectPath path;
    const auto argument = reference.value<QDBusArgument>();
    if (argument.currentSignature() != u"(so)")
        return {};
    argument.beginStructure();
    argument >> name >> path;
    argument.endStructure();
    return name.isEmpty() ? QString() : path.path();
}

} // namespace

SessionLock::SessionLock(const QDBusConnection &sessionBus, const QDBusConnection &systemBus)
    : m_sessionBus(sessionBus)
    , m_systemBus(systemBus)
{
    // The bus looks the slots' types up by their names.
    qRegisterMetaType<QVariantMap>();
    qRegisterMetaType<QDBusMessage>();
    for (QDBusServiceWatcher *services : {&m_sessionServices, &m_systemServices})
        connect(services, &QDBusServiceWatcher::serviceOwnerChanged, this,
                [this](const QString &service, const QString &, const QString &newOwner) {
                    ownerChanged(service, newOwner);
                });
    if (m_sessionBus.isConnected())
        watchScreenSavers();
    if (m_systemBus.isConnected())
        watchLogin();
}

void SessionLock::watchScreenSavers()
{
    m_sessionServices.setConnection(m_sessionBus);
    for (const ScreenSaver &saver : screenSavers) {
        const QString service = saver.service;
        m_sessionServices.addWatchedService(service);
        m_sessionBus.connect(service, saver.path, service, u"ActiveChanged"_s, this,
                             SLOT(activeChanged(bool, QDBusMessage)));
    }
    for (const QString &service : m_sessionServices.watchedServices())
        askScreenSaver(service);
}

void SessionLock::watchLogin()
{
    m_systemServices.setConnection(m_systemBus);
    m_systemServices.addWatchedService(login);
    m_systemBus.connect(login, loginPath, loginManager, u"PrepareForSleep"_s, this,
                        SLOT(prepareForSleep(bool)));
    askLogin();
}

void SessionLock::ownerChanged(const QString &service, const QString &newOwner)
{
    m_lockedBy.remove(service);
    if (service == login)
        m_lockedBy.remove(suspend);
    if (newOwner.isEmpty())
        return;
    if (service == login)
        askLogin();
    else
        askScreenSaver(service);
}

void SessionLock::askScreenSaver(const QString &service)
{
    for (const ScreenSaver &saver : screenSavers) {
        if (saver.service != service)
            continue;
        BusQuestion::askLater(
            m_sessionBus, BusQuestion::toRunningService(service, saver.path, service, u"GetActive"_s),
            lockAnswerTimeout, *this,
            [this, service](const QDBusMessage &reply) { setLocked(service, BusQuestion::valueOf(reply)); });
    }
}

void SessionLock::askLogin()
{
    const QString session = qEnvironmentVariable("XDG_SESSION_ID");
    QDBusMessage question = BusQuestion::toRunningService(
        login, loginPath, loginManager, session.isEmpty() ? u"GetSessionByPID"_s : u"GetSession"_s);
    if (session.isEmpty())
        question << static_cast<uint>(QCoreApplication::applicationPid());
    else
        question << session;
    BusQuestion::askLater(m_systemBus, question, lockAnswerTimeout, *this, [this](const QDBusMessage &reply) {
        const QString path = BusQuestion::valueOf(reply).value<QDBusObjectPath>().path();
        if (path.isEmpty())
            askDisplaySession();
        else
            askLoginSession(path);
    });
}

/// A process that the user's service manager or the bus has started belongs to no session.
void SessionLock::askDisplaySession()
{
    const QDBusMessage question = BusQuestion::forProperty(login, loginPath + u"/user/self"_s,
                                                           u"org.freedesktop.login1.User"_s, u"Display"_s);
    BusQuestion::askLater(m_systemBus, question, lockAnswerTimeout, *this, [this](const QDBusMessage &reply) {
        const QString path = sessionPath(BusQuestion::valueOf(reply));
        if (!path.isEmpty())
            askLoginSession(path);
    });
}

void SessionLock::askLoginSession(const QString &path)
{
    if (path != m_loginSession) {
        if (!m_loginSession.isEmpty())
            m_systemBus.disconnect(login, m_loginSession, properties, u"PropertiesChanged"_s, this,
                                   SLOT(propertiesChanged(QString, QVariantMap)));
        m_loginSession = path;
        m_systemBus.connect(login, path, properties, u"PropertiesChanged"_s, this,
                            SLOT(propertiesChanged(QString, QVariantMap)));
    }
    BusQuestion::askLater(
        m_systemBus, BusQuestion::forProperty(login, path, loginSession, lockedHint), lockAnswerTimeout,
        *this, [this](const QDBusMessage &reply) { setLocked(login, BusQuestion::valueOf(reply)); });
}

void SessionLock::activeChanged(bool isActive, const QDBusMessage &signal)
{
    setLocked(signal.interface(), isActive);
}

void SessionLock::propertiesChanged(const QString &interface, const QVariantMap &changed)
{
    if (interface == loginSession && changed.contains(lockedHint))
        setLocked(login, changed.value(lockedHint));
}

/// A break that is on the screen when the machine falls asleep would still be there after the resume.
void SessionLock::prepareForSleep(bool isComing)
{
    setLocked(suspend, isComing);
}

void SessionLock::setLocked(const QString &service, const QVariant &isLocked)
{
    // Any other type would convert: a text is true unless it is empty or "false".
    if (isLocked.typeId() != QMetaType::Bool)
        return;
    if (isLocked.toBool())
        m_lockedBy.insert(service);
    else
        m_lockedBy.remove(service);
}
