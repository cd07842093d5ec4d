// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ModuleInterface.h"

#include <memory>

class Chime;
class QString;

/// The interface of the sound module.
class SoundModule : public ModuleInterface
{
public:
    static constexpr const char *fileName = "sound.so";

    /// The sound `name` of the chime is the file `name`.wav in `soundsFolder`.
    [[nodiscard]] virtual std::unique_ptr<Chime> makeChime(const QString &soundsFolder) const = 0;
};

Q_DECLARE_INTERFACE(SoundModule, "OrvaneBreak.SoundModule")
