// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PlatformChoice.h"

#include <QString>

#include <optional>

/// What was found out about the program and the desktop that it runs on. Texts are in English.
struct DiagnosticFacts
{
    QString version;
    QString toolkitVersion; ///< The one that runs.
    QString toolkitVersionOfBuild;
    QString system;      ///< Name and version of the operating system.
    QString sessionType; ///< XDG_SESSION_TYPE; empty when unset, as the next one.
    QString currentDesktop;
    DisplayFacts display;
    QString idleSource;
    bool isSessionBusSilent = false; ///< It takes connections and does not answer in time.
    bool hasSessionBus = false;
    std::optional<bool> hasTrayHost;   ///< Absent: there is no service that knows.
    std::optional<uint> portalVersion; ///< Of the settings portal; absent where it does not answer.
    std::optional<uint> portalScheme;  ///< The portal's "color-scheme"; absent where it has none.
};

/// How a break covers the screens on the platform that such a desktop gets.
[[nodiscard]] QString overlayKind(const DisplayFacts &display);

/// The facts as a table of one screen, one per line.
[[nodiscard]] QString diagnosticReport(const DiagnosticFacts &facts);
