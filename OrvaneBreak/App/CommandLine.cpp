// SPDX-License-Identifier: GPL-3.0-or-later
#include "CommandLine.h"

#include <cstdio>
#include <string_view>

namespace {

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

CommandLine CommandLine::parse(int argc, char **argv)
{
    CommandLine result;
    for (int index = 1; index < argc && !result.exitStatus; ++index) {
        const std::string_view argument = argv[index];
        if (argument == "--help" || argument == "-h") {
            std::fputs(help, stdout);
            result.exitStatus = 0;
        } else if (argument == "--version") {
            std::printf("OrvaneBreak %s\n", ORVANE_VERSION);
            result.exitStatus = 0;
        } else if (argument == "--break-now") {
            result.isBreakNow = true;
        } else if (argument == "--diagnostics") {
            result.isDiagnostics = true;
        } else {
            std::fprintf(stderr, "orvanebreak: unknown argument: %s (see --help)\n", argv[index]);
            result.exitStatus = 2;
        }
    }
    return result;
}
