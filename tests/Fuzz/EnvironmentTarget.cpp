// SPDX-License-Identifier: GPL-3.0-or-later
#include "AutostartEntry.h"
#include "DiagnosticReport.h"
#include "PlatformChoice.h"
#include "PortalLoginItem.h"
#include "SessionBus.h"
#include "Target.h"
#include "UserFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

/// The variables that the program itself reads.
constexpr std::array variables{"HOME",
                               "XDG_CONFIG_HOME",
                               "XDG_CACHE_HOME",
                               "XDG_DATA_HOME",
                               "XDG_STATE_HOME",
                               "XDG_RUNTIME_DIR",
                               "HOST_XDG_CONFIG_HOME",
                               "XDG_CURRENT_DESKTOP",
                               "WAYLAND_DISPLAY",
                               "XDG_SESSION_TYPE",
                               "DBUS_SESSION_BUS_ADDRESS",
                               "DISPLAY",
                               "QT_QPA_PLATFORM"};

/// Sets the variables in `input`.
void setEnvironment(const QByteArray &input)
{
    for (const char *variable : variables)
        qunsetenv(variable);
    for (const QByteArray &entry : input.split('\0')) {
        const QByteArray name = entry.left(entry.indexOf('='));
        const bool isRead = std::find(variables.begin(), variables.end(), name) != variables.end();
        if (isRead && name.size() < entry.size())
            qputenv(name.constData(), entry.mid(name.size() + 1));
    }
}

void checkFolder(const std::filesystem::path &folder, const char *variable, const char *belowHome)
{
    const std::filesystem::path configured = qgetenv(variable).toStdString();
    const std::filesystem::path home = QFile::encodeName(QDir::homePath()).toStdString();
    require(folder == (configured.is_absolute() ? configured : home / belowHome),
            "a folder is at the configured place");
}

void checkFolders()
{
    checkFolder(UserFolders::configuration(), "XDG_CONFIG_HOME", ".config");
    checkFolder(UserFolders::cache(), "XDG_CACHE_HOME", ".cache");
    checkFolder(UserFolders::data(), "XDG_DATA_HOME", ".local/share");
    checkFolder(UserFolders::state(), "XDG_STATE_HOME", ".local/state");
}

void checkLoginItems()
{
    const QString name = u"/autostart/ch.example.Eyes.desktop"_s;
    for (const auto &parameters : {AutostartEntry::standardParameters(u"ch.example.Eyes"_s),
                                   PortalLoginItem::standardParameters(u"ch.example.Eyes"_s)}) {
        require(parameters.file.endsWith(name), "the entry has its name");
        for (const QString &desktop : parameters.desktops)
            require(!desktop.isEmpty() && !desktop.contains(u':'), "a name of a desktop is not a list");
    }
}

/// Finds the facts only for platforms that the user set and that need no server.
void checkPlatform()
{
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    DisplayFacts facts;
    if (!platform.isEmpty() && !platform.contains("wayland") && !platform.contains("xcb"))
        facts = findDisplayFacts(std::chrono::seconds(1));
    require(facts.compositor == CompositorAnswer::Absent && !facts.isX11Reachable,
            "no display server is contacted");
    {
        const PlatformEnvironment environment(choosePlatform(facts));
        require(qgetenv("QT_QPA_PLATFORM") == platform, "the user's platform takes precedence");
    }
    require(qgetenv("QT_QPA_PLATFORM") == platform, "the user's platform is restored");

    DiagnosticFacts report;
    const auto lines = diagnosticReport(report).count(u'\n');
    report.sessionType = qEnvironmentVariable("XDG_SESSION_TYPE");
    report.currentDesktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    report.display = facts;
    require(diagnosticReport(report).count(u'\n') == lines, "every fact has one line");
}

void checkSessionBus()
{
    const QByteArray before = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    preventSessionBusLaunch();
    const QByteArray after = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    require(after == before || (before.isEmpty() && after == "disabled:"), "an address is not changed");
}

} // namespace

/// The input is an environment with a zero byte after each variable.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int count = 1;
    static std::array<char *, 2> arguments{const_cast<char *>("orvanebreak"), nullptr};
    static const QCoreApplication application(count, arguments.data());
    setEnvironment(fuzzInput(data, size));
    acceptedInputs += qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") ? 0 : 1;
    checkFolders();
    checkLoginItems();
    checkPlatform();
    checkSessionBus();
    return 0;
}
