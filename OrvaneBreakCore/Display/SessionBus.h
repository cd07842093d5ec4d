// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// If no session bus is running, keeps the D-Bus library from launching one, which would outlive the program.
/// Changes this process's environment; to be called before anything connects to the bus.
void preventSessionBusLaunch();
