// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PlatformChoice.h"

#include <QString>

#include <optional>

/// What is known about the program and the desktop it runs on. Texts are in English.
struct DiagnosticFacts
{
    QString version;
    QString toolkitVersion;        ///< Of the library that is loaded.
    QString toolkitVersionOfBuild; ///< Of the headers that the program was compiled with.
    QString system;                ///< Name and version of the operating system.
    QString sessionType;           ///< XDG_SESSION_TYPE; empty when unset.
    QString currentDesktop;        ///< XDG_CURRENT_DESKTOP; empty when unset.
    DisplayFacts display;
    QString idleSource;
    bool isSessionBusSilent = false; ///< The bus accepts connections but does not answer in time.
    bool hasSessionBus = false;
    std::optional<bool> hasTrayHost;   ///< Absent without a watcher service to ask.
    std::optional<uint> portalVersion; ///< Of the settings portal; absent if it does not answer.
    std::optional<uint> portalScheme;  ///< The portal's "color-scheme"; absent if it has none.
};

/// How a break covers the screens with the platform plugin that is chosen for `display`.
[[nodiscard]] QString overlayKind(const DisplayFacts &display);

/// The facts as a table, one per line.
[[nodiscard]] QString diagnosticReport(const DiagnosticFacts &facts);
