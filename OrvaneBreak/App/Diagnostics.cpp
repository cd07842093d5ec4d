// SPDX-License-Identifier: GPL-3.0-or-later
#include "Diagnostics.h"

#include "BusQuestion.h"
#include "DesktopUserIdle.h"
#include "DiagnosticReport.h"
#include "SessionBus.h"
#include "TimerfdRunLoop.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDeadlineTimer>
#include <QSysInfo>
#include <QThread>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds answerTimeout(1);

/// For all questions together; each has its own limit.
constexpr std::chrono::seconds limit(6);

const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString portalSettings = u"org.freedesktop.portal.Settings"_s;
const QString trayWatcher = u"org.kde.StatusNotifierWatcher"_s;

/// The first value of the reply; nothing without a reply or for a value of another type.
template <typename Value>
std::optional<Value> answerTo(const QDBusConnection &bus, const QDBusMessage &question)
{
    const QVariant value = BusQuestion::valueOf(BusQuestion::ask(bus, question, answerTimeout));
    return value.canConvert<Value>() ? std::optional(value.value<Value>()) : std::nullopt;
}

void askSessionBus(DiagnosticFacts &facts)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    facts.hasSessionBus = bus.isConnected();
    if (!facts.hasSessionBus)
        return;
    facts.hasTrayHost =
        answerTo<bool>(bus, BusQuestion::forProperty(trayWatcher, u"/StatusNotifierWatcher"_s, trayWatcher,
                                                     u"IsStatusNotifierHostRegistered"_s));
    QDBusMessage versionQuestion =
        BusQuestion::forProperty(portalService, portalPath, portalSettings, u"version"_s);
    versionQuestion.setAutoStartService(true);
    facts.portalVersion = answerTo<uint>(bus, versionQuestion);
    if (!facts.portalVersion)
        return;
    QDBusMessage schemeQuestion =
        QDBusMessage::createMethodCall(portalService, portalPath, portalSettings, u"Read"_s);
    schemeQuestion << u"org.freedesktop.appearance"_s << u"color-scheme"_s;
    facts.portalScheme = answerTo<uint>(bus, schemeQuestion);
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
    facts.display = findDisplayFacts(answerTimeout);
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
        completeFacts.idleSource = QString::fromLatin1(userIdleSourceName(DesktopUserIdle(runLoop).source()));
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
