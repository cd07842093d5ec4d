// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The short sounds of the application.
class Chime
{
public:
    Chime() = default;
    virtual ~Chime() = default;
    Chime(const Chime &) = delete;
    Chime &operator=(const Chime &) = delete;

    /// Plays the sound named `name` ("Glass") once and returns at once. Does nothing without such a sound, a
    /// sound server or a sound card; failures are silent.
    virtual void play(const QString &name) = 0;
};
