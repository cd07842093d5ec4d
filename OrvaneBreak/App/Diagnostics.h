// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Looks at the desktop and prints a page about it to the standard output, in English. Needs neither a
/// display nor a session bus, and no application object: it makes one of its own. Every question to a service
/// waits for at most a second.
void printDiagnostics(int argc, char **argv);
