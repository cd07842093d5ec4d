// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Chime.h"
#include "OnDemand.h"

/// Sounds through the sound module, which the first sound loads. Without the module nothing is played.
/// User-interface thread only.
class OnDemandChime final : public Chime
{
public:
    /// The sound `name` is the file `name`.wav in `soundsFolder`.
    explicit OnDemandChime(const QString &soundsFolder);

    explicit OnDemandChime(OnDemand<Chime>::Make make);

    void play(const QString &name) override;

private:
    OnDemand<Chime> m_chime;
};
