// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/AppDelegate.h"

#include "Engine/BreakEngine.h"

#include <QCoreApplication>

#include <utility>

namespace {

constexpr int postponementMinutes = 10;

bool isDebugSwitchOn(const char *variable)
{
    return qgetenv(variable) == "1";
}

} // namespace

AppDelegate::AppDelegate(Services services)
    : m_engine(services.engine)
    , m_statusController(std::move(services.makeTrayItem))
{
}

AppDelegate::~AppDelegate()
{
    m_engine.onChange = nullptr;
}

void AppDelegate::applicationDidFinishLaunching()
{
    m_engine.onChange = [this] { refreshBreakUI(); };
    m_statusController.enable(buildStatusMenu());
    refreshBreakUI();
    if (isDebugSwitchOn("ORVANE_DEBUG_BREAK"))
        m_engine.breakNow();
}

void AppDelegate::applicationWillTerminate()
{
    m_engine.stop();
}

void AppDelegate::terminate()
{
    // The toolkit's own way to quit closes every window first, the break's as well, before the keyboard has
    // been given back.
    m_engine.stop();
    QCoreApplication::exit();
}

void AppDelegate::refreshBreakUI()
{
    m_statusController.setActive(m_engine.isActive());
    if (m_statusController.isEnabled())
        m_statusController.enable(buildStatusMenu());
}

void AppDelegate::breakToggled()
{
    if (m_engine.isActive())
        m_engine.stop();
    else
        m_engine.start();
}

void AppDelegate::breakNowPressed()
{
    m_engine.breakNow();
}

void AppDelegate::postponePressed()
{
    m_engine.postpone(postponementMinutes);
}
