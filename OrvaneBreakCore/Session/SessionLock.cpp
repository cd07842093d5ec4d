// SPDX-License-Identifier: GPL-3.0-or-later
#include "SessionLock.h"

#include <QCoreApplication>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

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
const QString loginManager = u"org.freedesktop.login1.Manager"_s;
const QString loginSession = u"org.freedesktop.login1.Session"_s;
const QString properties = u"org.freedesktop.DBus.Properties"_s;
const QString lockedHint = u"LockedHint"_s;

QDBusMessage questionFor(const QString &service, const QString &path, const QString &interface,
                         const QString &method)
{
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, interface, method);
    question.setAutoStartService(false);
    return question;
}

} // namespace

SessionLock::SessionLock(const QDBusConnection &sessionBus, const QDBusConnection &systemBus)
{
    // The bus looks the slots' types up by their names.
    qRegisterMetaType<QVariantMap>();
    qRegisterMetaType<QDBusMessage>();
    if (sessionBus.isConnected())
        listenToScreenSavers(sessionBus);
    if (systemBus.isConnected())
        findLoginSession(systemBus);
}

void SessionLock::listenToScreenSavers(QDBusConnection bus)
{
    for (const ScreenSaver &saver : screenSavers) {
        const QString service = saver.service;
        const QString path = saver.path;
        bus.connect(service, path, service, u"ActiveChanged"_s, this,
                    SLOT(activeChanged(bool, QDBusMessage)));
        ask(bus, questionFor(service, path, service, u"GetActive"_s),
            [this, service](const QVariant &answer) { setLocked(service, answer); });
    }
}

void SessionLock::findLoginSession(const QDBusConnection &bus)
{
    const QString session = qEnvironmentVariable("XDG_SESSION_ID");
    QDBusMessage question = questionFor(login, u"/org/freedesktop/login1"_s, loginManager,
                                        session.isEmpty() ? u"GetSessionByPID"_s : u"GetSession"_s);
    if (session.isEmpty())
        question << static_cast<uint>(QCoreApplication::applicationPid());
    else
        question << session;
    ask(bus, question, [this, bus](const QVariant &answer) {
        listenToLoginSession(bus, answer.value<QDBusObjectPath>().path());
    });
}

void SessionLock::listenToLoginSession(QDBusConnection bus, const QString &path)
{
    bus.connect(login, path, properties, u"PropertiesChanged"_s, this,
                SLOT(propertiesChanged(QString, QVariantMap)));
    QDBusMessage question = questionFor(login, path, properties, u"Get"_s);
    question << loginSession << lockedHint;
    ask(bus, question,
        [this](const QVariant &answer) { setLocked(loginSession, answer.value<QDBusVariant>().variant()); });
}

void SessionLock::ask(const QDBusConnection &bus, const QDBusMessage &question,
                      std::function<void(const QVariant &)> answered)
{
    auto *call = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [call, answered = std::move(answered)] {
        const QDBusMessage reply = call->reply();
        if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty())
            answered(reply.arguments().constFirst());
        call->deleteLater();
    });
}

void SessionLock::activeChanged(bool isActive, const QDBusMessage &signal)
{
    setLocked(signal.interface(), isActive);
}

void SessionLock::propertiesChanged(const QString &interface, const QVariantMap &changed)
{
    if (interface == loginSession && changed.contains(lockedHint))
        setLocked(loginSession, changed.value(lockedHint));
}

void SessionLock::setLocked(const QString &by, const QVariant &isLocked)
{
    // Any other type would convert: a text is true unless it is empty or says no.
    if (isLocked.typeId() != QMetaType::Bool)
        return;
    const bool wasLocked = this->isLocked();
    if (isLocked.toBool())
        m_lockedBy.insert(by);
    else
        m_lockedBy.remove(by);
    if (this->isLocked() && !wasLocked && onLocked)
        onLocked();
}
