// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Keeps the Wayland library from writing to standard error.
void dropWaylandMessages();
