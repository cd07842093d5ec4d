// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Where no session bus is running, keeps the D-Bus library from starting one of its own, which would outlive
/// the program. Changes this process's environment; call before anything connects to the bus.
void preventSessionBusLaunch();
