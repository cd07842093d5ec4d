// SPDX-License-Identifier: GPL-3.0-or-later
#include "DiagnosticReport.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int labelWidth = 18;

/// Replaces control characters, which texts from the environment may contain.
QString withoutControls(QString text)
{
    const auto isControl = [](QChar character) { return character.category() == QChar::Other_Control; };
    std::replace_if(text.begin(), text.end(), isControl, u' ');
    return text;
}

QString line(const QString &label, const QString &text)
{
    return u"  "_s + label.leftJustified(labelWidth) + withoutControls(text) + u'\n';
}

QString orUnset(const QString &text)
{
    return text.isEmpty() ? u"(not set)"_s : text;
}

QString platformName(const DisplayFacts &display)
{
    return display.requestedPlatform.isEmpty() ? QString::fromLatin1(choosePlatform(display).platform)
                                               : display.requestedPlatform;
}

QString platformText(const DisplayFacts &display)
{
    const QString name = platformName(display);
    return (name.isEmpty() ? u"none"_s : name) + u", because "_s +
           QString::fromLatin1(choosePlatform(display).reason);
}

QString busText(const DiagnosticFacts &facts)
{
    if (facts.isSessionBusSilent)
        return u"does not answer"_s;
    return facts.hasSessionBus ? u"present"_s : u"absent"_s;
}

QString trayText(const DiagnosticFacts &facts)
{
    if (!facts.hasSessionBus)
        return u"unknown without a session bus"_s;
    if (!facts.hasTrayHost)
        return u"absent, and no watcher is running"_s;
    return *facts.hasTrayHost ? u"present"_s : u"absent"_s;
}

QString schemeText(std::optional<uint> scheme)
{
    if (!scheme)
        return u"none"_s;
    switch (*scheme) {
    case 1:
        return u"dark"_s;
    case 2:
        return u"light"_s;
    default:
        return u"no preference"_s;
    }
}

QString portalText(const DiagnosticFacts &facts)
{
    if (!facts.hasSessionBus)
        return u"unknown without a session bus"_s;
    if (!facts.portalVersion)
        return u"absent"_s;
    return u"version %1, color scheme: %2"_s.arg(QString::number(*facts.portalVersion),
                                                 schemeText(facts.portalScheme));
}

} // namespace

QString overlayKind(const DisplayFacts &display)
{
    const QString name = platformName(display);
    if (name.isEmpty())
        return u"none without a display"_s;
    if (name.startsWith("xcb"_L1))
        return u"windows that bypass the window manager"_s;
    if (name.startsWith("wayland"_L1) && display.compositor == CompositorAnswer::LayerShell)
        return u"layer surfaces"_s;
    if (name.startsWith("wayland"_L1) && display.compositor == CompositorAnswer::Unasked)
        return u"layer surfaces if the compositor offers a layer shell, otherwise full-screen windows"_s;
    return u"full-screen windows"_s;
}

QString diagnosticReport(const DiagnosticFacts &facts)
{
    return u"OrvaneBreak "_s + facts.version + u'\n' +
           line(u"Qt"_s, u"%1, built with %2"_s.arg(facts.toolkitVersion, facts.toolkitVersionOfBuild)) +
           line(u"System"_s, facts.system) + line(u"Session type"_s, orUnset(facts.sessionType)) +
           line(u"Desktop"_s, orUnset(facts.currentDesktop)) +
           line(u"Platform plugin"_s, platformText(facts.display)) +
           line(u"Overlay"_s, overlayKind(facts.display)) + line(u"Idle time"_s, facts.idleSource) +
           line(u"Session bus"_s, busText(facts)) + line(u"Tray host"_s, trayText(facts)) +
           line(u"Settings portal"_s, portalText(facts));
}
