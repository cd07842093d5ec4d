// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

/// The options on the command line.
struct CommandLine
{
    /// Parses the arguments. Prints the text for --help and --version to standard output and sets
    /// `exitStatus` to 0; reports an unknown argument on standard error and sets it to 2. Needs neither an
    /// application object nor a display.
    [[nodiscard]] static CommandLine parse(int argc, char **argv);

    /// Whether to write to the user of a terminal in French; otherwise in English.
    [[nodiscard]] static bool isFrench();

    std::optional<int> exitStatus; ///< If set, the process exits with it at once.
    bool isBreakNow = false;       ///< Start a break at once, in the running instance if there is one.
    bool isDiagnostics = false;    ///< Print the diagnostics and do nothing else.
    bool isRestored = false; ///< Started by a session manager with a saved session, which shows nothing.
};
