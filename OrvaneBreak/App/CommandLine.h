// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

/// What the program was asked for on its command line.
struct CommandLine
{
    /// Reads the arguments. --help and --version are answered on the standard output, an unknown argument is
    /// refused on the standard error; `exitStatus` is then 0 or 2. Needs no application object and no
    /// display.
    [[nodiscard]] static CommandLine parse(int argc, char **argv);

    std::optional<int> exitStatus; ///< When set, the process ends with it at once.
    bool isBreakNow = false;       ///< Begin a break at once, in the running instance if there is one.
    bool isDiagnostics = false;    ///< Print the diagnostics and do nothing else.
};
