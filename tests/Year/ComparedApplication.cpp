// SPDX-License-Identifier: GPL-3.0-or-later
#include "ComparedApplication.h"

#include "BreakSettings.h"

#include <QAction>
#include <QLabel>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// By how much a break may end late.
constexpr Interval ringStep = 100ms;

SPUUpdater::Configuration updatesFromTheMakers()
{
    return {QUrl(u"https://makers.invalid/appcast.xml"_s), Ed25519::PublicKey{1}, UpdateVersion(u"1.0"_s),
            u"x86_64"_s, UpdateVersion(u"6.1"_s)};
}

QString line(const Effect &effect)
{
    switch (effect.kind) {
    case Effect::Kind::Show:
        return u"show %1"_s.arg(static_cast<int>(effect.first));
    case Effect::Kind::Update:
        return u"update %1 %2"_s.arg(effect.first, 0, 'f', 3).arg(effect.second, 0, 'f', 3);
    case Effect::Kind::Hide:
        return u"hide"_s;
    case Effect::Kind::Play:
        return u"play Glass"_s;
    case Effect::Kind::Change:
        break;
    }
    return u"change"_s;
}

/// The expected status text, computed without the program.
QString expectedStatus(const EngineModel &model)
{
    if (model.isOnBreak())
        return u"Pause en cours : regarde au loin"_s;
    if (!model.isActive())
        return u"Rappels désactivés"_s;
    const qint64 microseconds = (*model.nextBreakDate() - model.now).count();
    const qint64 minutes = microseconds <= 60'000'000 ? 1 : (microseconds + 59'999'999) / 60'000'000;
    if (minutes < 60)
        return u"Prochaine pause dans "_s + QString::number(minutes) + u" min"_s;
    return u"Prochaine pause dans "_s + QString::number(minutes / 60) + u" h "_s +
           QString::number(minutes % 60).rightJustified(2, u'0');
}

} // namespace

ComparedApplication::ComparedApplication(const Kept &kept)
    : ApplicationFixture(updatesFromTheMakers(), kept.updates)
    , isMenuBarMode(kept.isMenuBarMode)
{
    preferences.stored = kept.preferences;
    runLoop.jump(kept.now - runLoop.now());
    model.now = kept.now;
    model.intervalMinutes = kept.intervalMinutes;
    model.pauseSeconds = kept.pauseSeconds;
    model.soundEnabled = kept.soundEnabled;
    overlay->next = &m_screens;
    m_screens.onSkip = [this] { overlay->onSkip(); };
    launch();
    engine.onChange = [this, refresh = engine.onChange] {
        log.append(u"change"_s);
        refresh();
        if (find<QLabel>(u"breakStatusLabel"_s)->text() != engine.statusText())
            differ(u"the text in the window"_s);
    };
}

ComparedApplication::~ComparedApplication()
{
    overlay->next = nullptr;
}

ComparedApplication::Kept ComparedApplication::kept() const
{
    return {runLoop.now(),      preferences.stored, updaterSettings.stored, model.intervalMinutes,
            model.pauseSeconds, model.soundEnabled, isMenuBarMode};
}

void ComparedApplication::pass(Interval interval)
{
    const Date end = runLoop.now() + interval;
    while (m_difference.isEmpty()) {
        const std::optional<Date> wakeUp = runLoop.nextWakeUp();
        if (wakeUp != model.nextWakeUp(observed(false)))
            differ(u"wake-ups"_s);
        if (!wakeUp || *wakeUp > end)
            break;
        const Interval step = std::max(*wakeUp - runLoop.now(), Interval::zero());
        m_breakLasted += step;
        runLoop.advance(step);
        model.wake(*wakeUp);
        compareEngines();
    }
    m_breakLasted += end - runLoop.now();
    runLoop.advance(end - runLoop.now());
    model.now = end;
}

void ComparedApplication::jump(Interval interval)
{
    m_wasClockSetBack = m_wasClockSetBack || interval < Interval::zero();
    runLoop.jump(interval);
    model.jump(interval);
    compareEngines();
}

void ComparedApplication::tell(EngineModel::Event event, int minutes)
{
    model.apply(event, minutes);
    compareEngines();
}

void ComparedApplication::compare()
{
    compareEngines();
    compareScreens();
    compareTexts();
    compareTimers();
}

void ComparedApplication::differ(const QString &what)
{
    if (m_difference.isEmpty())
        m_difference = what;
}

void ComparedApplication::compareEngines()
{
    if (engine.isActive() != model.isActive() || engine.isOnBreak() != model.isOnBreak())
        differ(u"the state"_s);
    if (engine.nextBreakDate() != model.nextBreakDate())
        differ(u"the date of the next break"_s);
    if (observed(true) != model.timers())
        differ(u"the engine's timers"_s);
    QStringList expected;
    for (const Effect &effect : std::exchange(model.effects, {}))
        expected << line(effect);
    const QStringList effects = takeLog();
    if (effects != expected)
        differ(u"what was done: %1; expected: %2"_s.arg(effects.join(u", "_s), expected.join(u", "_s)));
    noteBreak(effects);
    if (engine.isOnBreak() && !m_wasClockSetBack && m_breakLasted > m_breakLength + ringStep)
        differ(u"the length of a break"_s);
}

void ComparedApplication::noteBreak(const QStringList &effects)
{
    for (const QString &effect : effects) {
        if (effect.startsWith("show"_L1)) {
            m_isCovered = !m_isLocked;
            m_breakLasted = {};
            m_breakLength = std::chrono::seconds(effect.section(u' ', 1).toInt());
            m_wasClockSetBack = false;
        } else if (effect.startsWith("update"_L1)) {
            m_isCovered = !m_isLocked;
        } else if (effect == "hide"_L1) {
            m_isCovered = false;
        }
    }
}

void ComparedApplication::compareScreens()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto shown = std::count_if(windows.begin(), windows.end(), [](const QWidget *window) {
        return window->objectName() == "breakOverlayPanel"_L1 && window->isVisible();
    });
    const qsizetype expected = m_isCovered ? QGuiApplication::screens().size() : 0;
    if (shown != expected || static_cast<qsizetype>(surface.panels.size()) != expected)
        differ(u"%1 panels on the screens"_s.arg(shown));
    const auto modal = std::count_if(windows.begin(), windows.end(), [](const QWidget *window) {
        return window->isModal() && window->isVisible();
    });
    if (modal > 1)
        differ(u"%1 dialogs at a time"_s.arg(modal));
}

void ComparedApplication::compareTexts()
{
    if (engine.statusText() != expectedStatus(model))
        differ(u"the status \"%1\", expected \"%2\""_s.arg(engine.statusText(), expectedStatus(model)));
    if (BreakSettings::intervalMinutes(preferences) != model.intervalMinutes ||
        BreakSettings::pauseSeconds(preferences) != model.pauseSeconds ||
        BreakSettings::soundEnabled(preferences) != model.soundEnabled)
        differ(u"the settings"_s);
    if (tray.items != (isMenuBarMode ? 1 : 0) || presence.isAccessory != isMenuBarMode)
        differ(u"the mode"_s);
    if (!isMenuBarMode)
        return;
    if (tray.symbol != (model.isActive() ? u"eye.fill"_s : u"eye"_s))
        differ(u"the eye"_s);
    if (tray.menuTexts().constFirst() !=
        (model.isActive() ? u"Arrêter les rappels"_s : u"Protéger mes yeux"_s))
        differ(u"the menu"_s);
}

void ComparedApplication::compareTimers()
{
    const std::vector<ObservedTimer> others = observed(false);
    const auto count = [&others](Interval interval, Interval tolerance) {
        return std::count_if(others.begin(), others.end(), [&](const ObservedTimer &timer) {
            return timer.interval == interval && timer.tolerance == tolerance;
        });
    };
    // Every hour: check-ins and the search for updates. Once: the timeout for a tray and the next search.
    const auto hourly = count(1h, 1min);
    const auto soon = count(0s, 1s);
    if (hourly < 1 || hourly > 2 || soon > 2 || hourly + soon != static_cast<qsizetype>(others.size()))
        differ(u"timers that are not the engine's: %1"_s.arg(timerLines(runLoop).join(u", "_s)));
}

std::vector<ObservedTimer> ComparedApplication::observed(bool ofTheEngine) const
{
    std::vector<ObservedTimer> result;
    for (const auto &entry : runLoop.timers()) {
        const bool isEngines = entry.tolerance == 10s || entry.tolerance == 5s || entry.tolerance == 0s;
        if (isEngines == ofTheEngine)
            result.push_back({entry.due, entry.interval, entry.tolerance});
    }
    std::sort(result.begin(), result.end());
    return result;
}
