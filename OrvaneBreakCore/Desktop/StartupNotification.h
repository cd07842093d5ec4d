// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

/// Tells an X11 desktop that the start with the identifier `id` is over, so that the pointer is no longer
/// busy. Does nothing for an empty identifier and on other desktops. User-interface thread only.
void endStartupNotification(const QByteArray &id);
