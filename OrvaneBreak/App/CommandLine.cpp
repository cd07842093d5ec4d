// SPDX-License-Identifier: GPL-3.0-or-later
#include "CommandLine.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

constexpr const char *helpInFrench =
    "Usage : orvanebreak [option]\n"
    "\n"
    "Te rappelle de reposer tes yeux : toutes les 20 minutes, regarde à 6 mètres pendant 20 secondes.\n"
    "Lancé une deuxième fois, il ramène l'app au premier plan.\n"
    "\n"
    "  --break-now    faire une pause tout de suite\n"
    "  --diagnostics  montrer ce que ce bureau offre et ce que l'app en fait (en anglais)\n"
    "  --help         montrer ce texte\n"
    "  --version      montrer la version\n";

constexpr const char *help =
    "Usage: orvanebreak [option]\n"
    "\n"
    "Reminds you to rest your eyes: every 20 minutes, look 6 metres away for 20 seconds.\n"
    "Started a second time, it brings the running instance to the front.\n"
    "\n"
    "  --break-now    take a break at once\n"
    "  --diagnostics  show what this desktop offers and what the program makes of it\n"
    "  --help         show this text\n"
    "  --version      show the version\n";

} // namespace

bool CommandLine::isFrench()
{
    // The first that is set decides, as for other programs.
    for (const char *variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char *locale = std::getenv(variable);
        if (locale && *locale != '\0')
            return std::string_view(locale).starts_with("fr");
    }
    return false;
}

CommandLine CommandLine::parse(int argc, char **argv)
{
    CommandLine result;
    for (int index = 1; index < argc && !result.exitStatus; ++index) {
        const std::string_view argument = argv[index];
        if (argument == "--help" || argument == "-h") {
            std::fputs(isFrench() ? helpInFrench : help, stdout);
            result.exitStatus = 0;
        } else if (argument == "--version") {
            std::printf("OrvaneBreak %s\n", ORVANE_VERSION);
            result.exitStatus = 0;
        } else if (argument == "--break-now") {
            result.isBreakNow = true;
        } else if (argument == "--diagnostics") {
            result.isDiagnostics = true;
        } else if (argument == "-session") {
            // Session managers append it, with an identifier, when they restore a session.
            result.isRestored = true;
            ++index;
        } else {
            std::fprintf(stderr,
                         isFrench() ? "orvanebreak : option inconnue : %s (voir --help)\n"
                                    : "orvanebreak: unknown argument: %s (see --help)\n",
                         argv[index]);
            result.exitStatus = 2;
        }
    }
    return result;
}
