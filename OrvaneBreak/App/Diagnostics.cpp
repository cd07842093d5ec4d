// SPDX-License-Identifier: GPL-3.0-or-later
#include "Diagnostics.h"

#include "DiagnosticReport.h"
#include "SessionBus.h"
#include "TimerfdRunLoop.h"
#include "UserIdleFactory.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QSysInfo>
#include <QThread>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int timeoutMilliseconds = 1000;

/// For all questions together; each has its own limit.
constexpr std::chrono::seconds limit(6);

const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString portalSettings = u"org.freedesktop.portal.Settings"_s;
const QString properties = u"org.freedesktop.DBus.Properties"_s;
const QString trayWatcher = u"org.kde.StatusNotifierWatcher"_s;

/// The first value of the answer without the variants around it, or an invalid one.
QVariant ask(const QDBusConnection &bus, QDBusMessage question, const QString &first, const QString &second)
{
    question << first << second;
    const QDBusMessage answer = bus.call(question, QDBus::Block, timeoutMilliseconds);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty())
        return {};
    QVariant value = answer.arguments().constFirst();
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

template <typename Value>
std::optional<Value> valueOf(const QVariant &answer)
{
    return answer.canConvert<Value>() ? std::optional(answer.value<Value>()) : std::nullopt;
}

void askSessionBus(DiagnosticFacts &facts)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    facts.hasSessionBus = bus.isConnected();
    if (!facts.hasSessionBus)
        return;
    QDBusMessage trayQuestion =
        QDBusMessage::createMethodCall(trayWatcher, u"/StatusNotifierWatcher"_s, properties, u"Get"_s);
    trayQuestion.setAutoStartService(false);
    facts.hasTrayHost =
        valueOf<bool>(ask(bus, trayQuestion, trayWatcher, u"IsStatusNotifierHostRegistered"_s));
    facts.portalVersion = valueOf<uint>(
        ask(bus, QDBusMessage::createMethodCall(portalService, portalPath, properties, u"Get"_s),
            portalSettings, u"version"_s));
    if (!facts.portalVersion)
        return;
    facts.portalScheme = valueOf<uint>(
        ask(bus, QDBusMessage::createMethodCall(portalService, portalPath, portalSettings, u"Read"_s),
            u"org.freedesktop.appearance"_s, u"color-scheme"_s));
}

/// The facts that need no service.
DiagnosticFacts localFacts()
{
    DiagnosticFacts facts;
    facts.version = QStringLiteral(ORVANE_VERSION);
    facts.toolkitVersion = QString::fromLatin1(qVersion());
    facts.toolkitVersionOfBuild = QStringLiteral(QT_VERSION_STR);
    facts.system = QSysInfo::prettyProductName();
    facts.sessionType = qEnvironmentVariable("XDG_SESSION_TYPE");
    facts.currentDesktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    facts.display = findDisplayFacts();
    facts.idleSource = u"unknown"_s;
    return facts;
}

void print(const DiagnosticFacts &facts)
{
    std::fputs(diagnosticReport(facts).toUtf8().constData(), stdout);
    std::fflush(stdout);
}

} // namespace

void printDiagnostics(int argc, char **argv)
{
    preventSessionBusLaunch();
    const QCoreApplication application(argc, argv);
    const TimerfdRunLoop runLoop;
    DiagnosticFacts facts = localFacts();
    DiagnosticFacts completeFacts = facts;
    // Calls over the bus have a timeout, but connecting to it has none.
    const std::unique_ptr<QThread> thread(QThread::create([&completeFacts, &runLoop] {
        completeFacts.idleSource = QString::fromLatin1(userIdleSourceName(makeUserIdle(runLoop).source));
        askSessionBus(completeFacts);
    }));
    thread->start();
    if (thread->wait(QDeadlineTimer(limit))) {
        print(completeFacts);
        return;
    }
    facts.isSessionBusSilent = true;
    print(facts);
    // Ends the process although the thread is still waiting for the bus.
    std::_Exit(EXIT_SUCCESS);
}
