// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Prints a report about the program and the desktop to standard output, in English. Needs neither a display
/// nor a session bus, and creates its own application object. Waits at most one second for each reply of a
/// service and six seconds in total.
void printDiagnostics(int argc, char **argv);
